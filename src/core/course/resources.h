#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// Finds the files the app ships with: course.json, solutions.json, the font.
namespace Kestrun::Resources {

// The path of a named resource file among the application's resources:
// share/kestrun beside the program's folder (or a folder above it, which is
// where a build tree keeps a link to the source tree's Resources/), or the
// bundle's Resources on macOS. Nothing when no such file exists.
std::optional<QString> url(const QString &name);

// The resource directories in the order url() searches them.
QStringList searchPath();

} // namespace Kestrun::Resources
