#pragma once

#include <QString>

// Every sentence the learner or the self-test's reader sees, in one place.
// Where the platforms differ, both sets stand side by side.
namespace Texts {

// Runs
inline const QString couldNotWrite = QStringLiteral("Could not write a temporary file: ");
inline const QString compilerNotStarted = QStringLiteral("The compiler could not be started.");
inline const QString testsCouldNotUse = QStringLiteral("The tests could not use your code: ");
inline const QString stoppedUnexpectedly = QStringLiteral("Your program stopped unexpectedly.");

// Start-up
inline const QString courseMissing = QStringLiteral("The course is missing from the app.");

// The toolchain's state; V stands for the version found.
#if defined(Q_OS_MACOS)
inline const QString noCompiler = QStringLiteral(
    "This Mac has no Swift compiler yet. The exercises need Apple's free Command Line Tools, or Xcode.");
inline QString compilerTooOld(const QString &v)
{
    return QStringLiteral("This Mac has Swift ") + v
        + QStringLiteral(". The exercises need Swift 6.2 or later: update Xcode or the Command Line Tools in Software Update.");
}
inline QString compilerBelow64(const QString &v)
{
    return QStringLiteral("Swift ") + v + QStringLiteral(" on this Mac. The Swift 6.4 lessons need Swift 6.4: update when you can.");
}
inline QString compilerReady(const QString &v)
{
    return QStringLiteral("Swift ") + v + QStringLiteral(" on this Mac, ready to run your code.");
}
inline const QString selfTestNoCompiler = QStringLiteral(
    "No Swift compiler found. Install Xcode or the Command Line Tools (xcode-select --install).");
#else
inline const QString noCompiler = QStringLiteral(
    "This computer has no Swift compiler yet. The exercises need Swift 6.2 or later from swift.org.");
inline QString compilerTooOld(const QString &v)
{
    return QStringLiteral("This computer has Swift ") + v
        + QStringLiteral(". The exercises need Swift 6.2 or later: install a newer toolchain from swift.org.");
}
inline QString compilerBelow64(const QString &v)
{
    return QStringLiteral("Swift ") + v + QStringLiteral(" on this computer. The Swift 6.4 lessons need Swift 6.4: update when you can.");
}
inline QString compilerReady(const QString &v)
{
    return QStringLiteral("Swift ") + v + QStringLiteral(" on this computer, ready to run your code.");
}
inline const QString selfTestNoCompiler = QStringLiteral(
    "No Swift compiler found. Install Swift 6.2 or later from swift.org.");
#endif

} // namespace Texts
