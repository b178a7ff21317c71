#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// Fuzzer bytes as text, both ways a file can reach the parsers: as UTF-8 and as
/// 16-bit units.
inline QString fuzzUtf8(const uint8_t *data, size_t size)
{
    return QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
}

inline QString fuzzUtf16(const uint8_t *data, size_t size)
{
    return QString(reinterpret_cast<const QChar *>(data), qsizetype(size / 2));
}

/// Stops the run when a property the code promises does not hold.
#define FUZZ_CHECK(condition)                                                                      \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            std::fprintf(stderr, "check failed: %s\n", #condition);                                \
            std::abort();                                                                          \
        }                                                                                          \
    } while (0)
