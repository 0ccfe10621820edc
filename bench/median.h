#pragma once

#include <QList>

#include <algorithm>

// The middle of a benchmark's measurements: these machines are noisy, and
// a median is not moved by the odd slow run.
inline double median(QList<double> values)
{
    if (values.isEmpty())
        return 0;
    std::sort(values.begin(), values.end());
    const qsizetype n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}
