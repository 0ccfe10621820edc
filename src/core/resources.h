#pragma once

#include <QString>

#include <optional>

// Finds the files the app ships with: course.json, solutions.json, the font.
namespace Resources {

// The path of a named resource file: first among the installed application's
// resources, then in the source tree's Resources/ directory recorded at build
// time, so that a build run from the source tree finds the course.
// Nothing when neither holds the file.
std::optional<QString> url(const QString &name);

// The resource directories in the order url() searches them.
QStringList searchPath();

} // namespace Resources
