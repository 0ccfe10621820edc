#include "screenshots.h"

#include <QtGlobal>

namespace Kestrun::Screenshots {

bool on()
{
    static const bool set = qEnvironmentVariableIsSet("KRX_SCREENSHOTS");
    return set;
}

} // namespace Kestrun::Screenshots
