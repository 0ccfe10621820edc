#pragma once

namespace Kestrun::Screenshots {

// Whether the environment holds KRX_SCREENSHOTS (any value, empty too):
// pictures of the app are then framed alike and code runs without a click.
bool on();

// In screenshots mode, puts the first visible window at 40,40 with
// 1440×900 and brings it to the front, once the current update is done.
void sizeWindow();

} // namespace Kestrun::Screenshots
