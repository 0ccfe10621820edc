#include "preferences.h"

#include <QSettings>

#include <algorithm>
#include <cmath>

namespace Kestrun {

namespace {

const QString editorFontSizeKey = QStringLiteral("editorFontSize");

double clamped(double points)
{
    if (std::isnan(points))
        return Preferences::defaultEditorFontSize;
    return std::clamp(std::round(points), Preferences::minimumEditorFontSize, Preferences::maximumEditorFontSize);
}

} // namespace

Preferences &Preferences::shared()
{
    static Preferences preferences;
    return preferences;
}

Preferences::Preferences()
{
    bool ok = false;
    const double stored = QSettings().value(editorFontSizeKey, defaultEditorFontSize).toDouble(&ok);
    m_editorFontSize = ok ? clamped(stored) : defaultEditorFontSize;
}

void Preferences::setEditorFontSize(double points)
{
    const double size = clamped(points);
    if (size == m_editorFontSize)
        return;
    m_editorFontSize = size;
    QSettings().setValue(editorFontSizeKey, size);
    Q_EMIT editorFontSizeChanged(size);
}

} // namespace Kestrun
