#pragma once

#include <QIODevice>

#include <libxml/xmlIO.h>

/// A libxml2 output buffer that writes what it is given to the open device as it comes,
/// so that a document is serialized once, straight where it goes; null when libxml2
/// cannot make one. Closing the buffer flushes it.
inline xmlOutputBufferPtr xmlOutputTo(QIODevice &device)
{
    const auto write = [](void *context, const char *buffer, int length) -> int {
        return int(static_cast<QIODevice *>(context)->write(buffer, length));
    };
    return xmlOutputBufferCreateIO(write, nullptr, &device, nullptr);
}
