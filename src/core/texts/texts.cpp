#include "texts.h"

#include <QCoreApplication>

#include <iterator>

namespace Kestrun::Texts {

namespace {

enum class Platform { any, macOS, other };

struct Row {
    Text text;
    Platform platform;
    const char *source;
};

#define T(text) QT_TRANSLATE_NOOP("Kestrun::Texts", text)

// One row per sentence; a sentence that differs by more than the machine's
// name has a row for each platform.
constexpr Row table[] = {
    {Text::courseMissing, Platform::any, T("The course is missing from the app.")},
    {Text::noCompiler, Platform::macOS,
     T("This {machine} has no Swift compiler yet. The exercises need Apple's free Command Line Tools, or Xcode.")},
    {Text::noCompiler, Platform::other,
     T("This {machine} has no Swift compiler yet. The exercises need Swift 6.2 or later from swift.org.")},
    {Text::compilerTooOld, Platform::macOS,
     T("This {machine} has Swift %1. The exercises need Swift 6.2 or later: update Xcode or the Command Line "
       "Tools in Software Update.")},
    {Text::compilerTooOld, Platform::other,
     T("This {machine} has Swift %1. The exercises need Swift 6.2 or later: install a newer toolchain from "
       "swift.org.")},
    {Text::compilerBelow64, Platform::any,
     T("Swift %1 on this {machine}. The Swift 6.4 lessons need Swift 6.4: update when you can.")},
    {Text::compilerReady, Platform::any, T("Swift %1 on this {machine}, ready to run your code.")},
    {Text::lookingForCompiler, Platform::any, T("Looking for the Swift compiler…")},
    {Text::stillLooking, Platform::any, T("Still looking for the Swift compiler. Try again in a moment.")},
    {Text::selfTestNoCompiler, Platform::macOS,
     T("No Swift compiler found. Install Xcode or the Command Line Tools (xcode-select --install).")},
    {Text::selfTestNoCompiler, Platform::other, T("No Swift compiler found. Install Swift 6.2 or later from swift.org.")},
    {Text::installTools, Platform::macOS, T("Install the Command Line Tools")},
    {Text::installTools, Platform::other, T("Open the Swift install guide")},
    {Text::installToolsNote, Platform::macOS,
     T("Apple's free installer opens. When it finishes, quit and reopen this app. Xcode works too.")},
    {Text::installToolsNote, Platform::other, T("Install Swift 6.2 or later, then quit and reopen this app.")},
    {Text::getXcode, Platform::any, T("Get Xcode from the App Store")},
    {Text::getXcodeNote, Platform::any,
     T("Xcode is free. When it is installed, open it once, then quit and reopen this app.")},

    {Text::couldNotWrite, Platform::any, T("Could not write a temporary file: ")},
    {Text::compilerNotStarted, Platform::any, T("The compiler could not be started.")},
    {Text::testsCouldNotUse, Platform::any, T("The tests could not use your code: ")},
    {Text::stoppedUnexpectedly, Platform::any, T("Your program stopped unexpectedly.")},

    {Text::appTitle, Platform::any, T("Swift: Kestrun")},
    {Text::previousLesson, Platform::any, T("Previous lesson")},
    {Text::nextLesson, Platform::any, T("Next lesson")},
    {Text::chapterHeading, Platform::any, T("%1. %2")},
    {Text::doneOfTotal, Platform::any, T("%1/%2")},
    {Text::lessonsInNineChapters, Platform::any, T("%1 lessons in nine chapters")},
    {Text::lessonsDone, Platform::any, T("%1 of %2 lessons done")},
    {Text::startTheCourse, Platform::any, T("Start the course")},
    {Text::continueWith, Platform::any, T("Continue: %1")},
    {Text::courseFinished, Platform::any, T("You finished the course. Well done.")},
    {Text::madeBy, Platform::any, T("Made by Velmora. Open source.")},
    {Text::done, Platform::any, T("Done")},

    {Text::breadcrumbSeparator, Platform::any, T("  ›  ")},
    {Text::aboutMinutes, Platform::any, T("About %1 minutes")},
    {Text::kindLesson, Platform::any, T("LESSON")},
    {Text::kindWorkshop, Platform::any, T("WORKSHOP")},
    {Text::kindLab, Platform::any, T("LAB")},
    {Text::kindQuiz, Platform::any, T("QUIZ")},
    {Text::kindXcode, Platform::any, T("XCODE")},
    {Text::kindProject, Platform::any, T("PROJECT")},
    {Text::markAsRead, Platform::any, T("Mark as read")},

    {Text::copyText, Platform::any, T("Copy")},
    {Text::copyLink, Platform::any, T("Copy Link")},
    {Text::selectAllText, Platform::any, T("Select All")},
    {Text::yourSwiftCode, Platform::any, T("Your Swift code")},

    {Text::yourTask, Platform::any, T("Your task")},
    {Text::tests, Platform::any, T("Tests")},
    {Text::getAHint, Platform::any, T("Get a hint")},
    {Text::reset, Platform::any, T("Reset")},
    {Text::run, Platform::any, T("Run")},
    {Text::runHelp, Platform::any, T("Run your code and check it (%1)")},
    {Text::passed, Platform::any, T("Passed")},
    {Text::failed, Platform::any, T("Failed")},
    {Text::notRunYet, Platform::any, T("Not run yet")},
    {Text::console, Platform::any, T("CONSOLE")},
    {Text::compilingAndRunning, Platform::any, T("Compiling and running your code…")},
    {Text::pressRun, Platform::any, T("Press Run (%1) to check your code.")},
    {Text::compilingTooLong, Platform::any, T("Compiling took too long.")},
    {Text::didNotCompile, Platform::any, T("Your code did not compile:")},
    {Text::errorOnLine, Platform::any, T("line %1: %2")},
    {Text::ranTooLong, Platform::any, T("Your program ran for too long and was stopped. Is there a loop that never ends?")},
    {Text::crashed, Platform::any, T("Your program crashed: ")},
    {Text::nothingPrinted, Platform::any, T("(Nothing was printed.)")},
    {Text::everyTestPasses, Platform::any, T("Every test passes.")},
    {Text::lessonPassed, Platform::any, T("Every test passes. Lesson done.")},
    {Text::nextWith, Platform::any, T("Next: %1")},
    {Text::lessonDone, Platform::any, T("Lesson done")},

    {Text::progressNotSaved, Platform::any,
     T("Your progress cannot be saved right now. Kestrun will try again at your next change.")},

    {Text::questions, Platform::any, T("Questions")},
    {Text::checkYourUnderstanding, Platform::any, T("Check your understanding")},
    {Text::right, Platform::any, T("**Right.** ")},
    {Text::notQuite, Platform::any, T("**Not quite.** ")},
    {Text::checkAgain, Platform::any, T("Check again")},
    {Text::checkMyAnswers, Platform::any, T("Check my answers")},
    {Text::allRight, Platform::any, T("All right.")},
    {Text::yourProject, Platform::any, T("Your project")},
    {Text::onYourMachine, Platform::any, T("On your {machine}")},
    {Text::markAsDone, Platform::any, T("Mark as done")},
    {Text::tickThenAnswer, Platform::any, T("Tick these off, then answer the questions below to finish.")},
    {Text::tickOffTheChecklist, Platform::any, T("All right. Tick off the checklist too.")},
    {Text::haveAnotherLook, Platform::any, T("Have another look at the ones marked.")},

    {Text::appMenu, Platform::any, T("Kestrun")},
    {Text::openSettings, Platform::any, T("Settings…")},
    {Text::quit, Platform::any, T("Quit")},
    {Text::settings, Platform::any, T("Settings")},
    {Text::lessonMenu, Platform::any, T("Lesson")},
    {Text::menuRun, Platform::any, T("Run")},
    {Text::menuResetCode, Platform::any, T("Reset Code")},
    {Text::menuPreviousLesson, Platform::any, T("Previous Lesson")},
    {Text::menuNextLesson, Platform::any, T("Next Lesson")},
    {Text::menuContinue, Platform::any, T("Continue Where I Left Off")},
    {Text::menuCourseHome, Platform::any, T("Course Home")},
    {Text::settingsEditor, Platform::any, T("Editor")},
    {Text::codeSize, Platform::any, T("Code size: %1 pt")},
    {Text::settingsSwift, Platform::any, T("Swift")},
    {Text::settingsProgress, Platform::any, T("Progress")},
    {Text::startAgain, Platform::any, T("Start the course again…")},
    {Text::startAgainTitle, Platform::any, T("Start the course again?")},
    {Text::startAgainMessage, Platform::any,
     T("Every finished lesson and all your code will be forgotten. This cannot be undone.")},
    {Text::forgetProgress, Platform::any, T("Forget my progress and code")},
};

#undef T

#if defined(Q_OS_MACOS)
constexpr Platform thisPlatform = Platform::macOS;
#else
constexpr Platform thisPlatform = Platform::other;
#endif

} // namespace

QString machine()
{
    return thisPlatform == Platform::macOS ? QCoreApplication::translate("Kestrun::Texts", "Mac")
                                           : QCoreApplication::translate("Kestrun::Texts", "computer");
}

QString get(Text text)
{
    for (const Row &row : table) {
        if (row.text == text && (row.platform == Platform::any || row.platform == thisPlatform)) {
            QString sentence = QCoreApplication::translate("Kestrun::Texts", row.source);
            return sentence.replace(QLatin1String("{machine}"), machine());
        }
    }
    Q_UNREACHABLE();
    return {};
}

} // namespace Kestrun::Texts
