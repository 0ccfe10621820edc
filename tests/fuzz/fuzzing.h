#pragma once

// Shared by the fuzz targets: reading the input and failing loudly.
#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace Kestrun::Fuzzing {

// An invariant broke: say which, then abort so that libFuzzer keeps the
// input and the corpus replay fails.
[[noreturn]] inline void fail(const char *file, int line, const char *what, const QString &detail)
{
    std::fprintf(stderr, "%s:%d: invariant broken: %s\n%s\n", file, line, what, detail.toUtf8().constData());
    std::abort();
}

inline QByteArray bytes(const uint8_t *data, size_t size)
{
    return QByteArray(reinterpret_cast<const char *>(data), qsizetype(size));
}

// UTF-8 text, or after a UTF-16LE byte order mark raw UTF-16 code units, so
// that the fuzzer also reaches what UTF-8 cannot carry: lone surrogates.
inline QString text(const uint8_t *data, size_t size)
{
    if (size >= 2 && data[0] == 0xFF && data[1] == 0xFE) {
        QString units;
        for (size_t i = 2; i + 1 < size; i += 2)
            units.append(QChar(char16_t(data[i] | data[i + 1] << 8)));
        return units;
    }
    return QString::fromUtf8(bytes(data, size));
}

} // namespace Kestrun::Fuzzing

#define FUZZ_CHECK(condition, detail)                                                      \
    do {                                                                                   \
        if (!(condition))                                                                  \
            ::Kestrun::Fuzzing::fail(__FILE__, __LINE__, #condition, (detail));            \
    } while (false)
