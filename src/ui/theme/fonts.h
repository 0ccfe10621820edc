#pragma once

#include <QFont>
#include <QString>

namespace Kestrun::Fonts {

// The home screen's pixel font, shipped among the resources.
inline constexpr char pixelFamily[] = "Velmora Pixel";
inline constexpr char pixelFile[] = "VelmoraPixel-Regular.ttf";

// Whether the pixel font is registered for this process. The first call
// registers it; later calls answer from memory.
bool registered();

// The pixel font at a size given for a 13-point body text; without it, the
// system's bold monospaced font at the same size.
QFont pixel(double points);

} // namespace Kestrun::Fonts
