#include "versioncompare.h"

namespace Kestrun {

namespace {

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

} // namespace

int compareVersions(const QString &a, const QString &b)
{
    qsizetype i = 0;
    qsizetype j = 0;
    while (i < a.size() && j < b.size()) {
        if (isDigit(a[i]) && isDigit(b[j])) {
            // Compare the runs of digits by value: skip leading zeros, then
            // the longer run is larger, then the first differing digit decides.
            while (i < a.size() && a[i] == u'0')
                ++i;
            while (j < b.size() && b[j] == u'0')
                ++j;
            qsizetype ei = i;
            qsizetype ej = j;
            while (ei < a.size() && isDigit(a[ei]))
                ++ei;
            while (ej < b.size() && isDigit(b[ej]))
                ++ej;
            if (ei - i != ej - j)
                return ei - i < ej - j ? -1 : 1;
            for (; i < ei; ++i, ++j) {
                if (a[i] != b[j])
                    return a[i] < b[j] ? -1 : 1;
            }
            continue;
        }
        if (a[i] != b[j])
            return a[i] < b[j] ? -1 : 1;
        ++i;
        ++j;
    }
    if (i < a.size())
        return 1;
    if (j < b.size())
        return -1;
    return 0;
}

} // namespace Kestrun
