#pragma once

#include "app/screenshots.h"

namespace Kestrun::Screenshots {

// In screenshots mode, puts the first visible window at 40,40 with
// 1440×900 and brings it to the front, once the current update is done.
void sizeWindow();

} // namespace Kestrun::Screenshots
