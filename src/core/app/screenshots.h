#pragma once

namespace Kestrun::Screenshots {

// Whether the environment holds KRX_SCREENSHOTS (any value, empty too):
// pictures of the app are then framed alike and code runs without a click.
// Read once, then fixed for the run.
bool on();

} // namespace Kestrun::Screenshots
