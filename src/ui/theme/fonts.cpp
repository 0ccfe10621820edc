#include "fonts.h"

#include "theme.h"
#include "course/resources.h"

#include <QFontDatabase>

namespace Kestrun::Fonts {

bool registered()
{
    static const bool done = [] {
        const std::optional<QString> file = Resources::url(QLatin1String(pixelFile));
        return file && QFontDatabase::addApplicationFont(*file) >= 0;
    }();
    return done;
}

QFont pixel(double points)
{
    if (!registered())
        return Theme::monospace(points, QFont::Bold);
    QFont font{QLatin1String(pixelFamily)};
    font.setPointSizeF(Theme::scaled(points));
    return font;
}

} // namespace Kestrun::Fonts
