#pragma once

#include <QString>

namespace Kestrun {

// Compares two version texts as Finder sorts names: runs of digits as
// numbers (so 6.10 is later than 6.4), other characters by code unit, with no
// locale. Negative, zero or positive, like strcmp.
int compareVersions(const QString &a, const QString &b);

} // namespace Kestrun
