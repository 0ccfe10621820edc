#pragma once

#include <QString>

namespace Kestrun {

// Every sentence the learner sees, named. The wording lives in one table
// (texts.cpp), ready for translation; where macOS and Linux differ only in
// the name of the machine, the text holds the placeholder "{machine}".
enum class Text {
    // Start-up and the toolchain
    courseMissing,
    noCompiler,
    compilerTooOld,       // %1: the version found
    compilerBelow64,      // %1: the version found
    compilerReady,        // %1: the version found
    lookingForCompiler,
    stillLooking,
    selfTestNoCompiler,
    installTools,         // the guidance box's button
    installToolsNote,
    getXcode,
    getXcodeNote,

    // Runs
    couldNotWrite,
    compilerNotStarted,
    testsCouldNotUse,
    stoppedUnexpectedly,

    // The window, the sidebar and the home screen
    appTitle,
    previousLesson,
    nextLesson,
    chapterHeading,       // %1: number, %2: title
    doneOfTotal,          // %1/%2
    lessonsInNineChapters,// %1: number of lessons
    lessonsDone,          // %1 of %2
    startTheCourse,
    continueWith,         // %1: lesson title
    courseFinished,
    madeBy,
    done,

    // The lesson frame
    breadcrumbSeparator,
    aboutMinutes,         // %1: minutes
    kindLesson,
    kindWorkshop,
    kindLab,
    kindQuiz,
    kindXcode,
    kindProject,
    markAsRead,

    // Lesson text and the code editor
    copyText,
    copyLink,
    selectAllText,
    yourSwiftCode,        // the editor's name for screen readers

    // The code lesson screen
    yourTask,
    tests,
    getAHint,
    reset,
    run,
    runHelp,              // %1: the shortcut
    passed,
    failed,
    notRunYet,
    console,
    compilingAndRunning,
    pressRun,             // %1: the shortcut
    compilingTooLong,
    didNotCompile,
    errorOnLine,          // %1: line, %2: message
    ranTooLong,
    crashed,              // followed by the reason
    nothingPrinted,
    everyTestPasses,
    lessonPassed,
    nextWith,             // %1: lesson title
    lessonDone,

    // Progress
    progressNotSaved,

    // Quizzes and checklists
    questions,
    checkYourUnderstanding,
    right,
    notQuite,
    checkAgain,
    checkMyAnswers,
    allRight,
    yourProject,
    onYourMachine,
    markAsDone,
    tickThenAnswer,
    tickOffTheChecklist,
    haveAnotherLook,

    // Menu and settings
    appMenu,
    openSettings,
    quit,
    settings,
    lessonMenu,
    menuRun,
    menuResetCode,
    menuPreviousLesson,
    menuNextLesson,
    menuContinue,
    menuCourseHome,
    settingsEditor,
    codeSize,             // %1: points
    settingsSwift,
    settingsProgress,
    startAgain,
    startAgainTitle,
    startAgainMessage,
    forgetProgress,
};

namespace Texts {

// The machine's name in running text: "Mac" on macOS, "computer" elsewhere.
QString machine();

// The sentence, translated, with "{machine}" filled in. Arguments such as
// %1 are left for the caller's QString::arg.
QString get(Text text);

} // namespace Texts

} // namespace Kestrun
