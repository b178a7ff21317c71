#pragma once

#include <QByteArray>

/// An output callback of libxml2 that appends what it is given to a QByteArray (the
/// context), so that a document is written once into memory the caller owns.
inline int appendToBytes(void *bytes, const char *buffer, int length)
{
    static_cast<QByteArray *>(bytes)->append(buffer, length);
    return length;
}
