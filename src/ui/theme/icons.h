#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>

namespace Kestrun::Icons {

// The symbols the screens ask for, by the names the design uses
// ("checkmark.circle.fill"), drawn from KDE's Breeze icons in one colour.
// An unknown name gives a null icon.
QIcon icon(const QString &symbol, const QColor &color);

// The same as a pixmap of a logical size, for a device pixel ratio.
QPixmap pixmap(const QString &symbol, const QColor &color, int size, qreal devicePixelRatio = 1);

// The Breeze file behind a symbol, such as "go-home"; empty when unknown.
QString fileName(const QString &symbol);

// Every symbol of the table, for tests and for the script that copies the files.
QStringList symbols();

} // namespace Kestrun::Icons
