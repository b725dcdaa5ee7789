#pragma once

#include "koSceneNodeDesc.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

// Feeds one input to a reader; whatever it accepts must be written and read back to the
// same bytes, as the host saves and opens files.
template <typename Parse, typename Serialize>
int fuzzRoundTrip(const uint8_t* data, size_t size, Parse parse, Serialize serialize)
{
    koSceneNodeDesc root;
    QString error;
    if (!parse(QByteArray::fromRawData(reinterpret_cast<const char*>(data), int(size)), root, &error))
        return 0;
    const QByteArray written = serialize(root);
    koSceneNodeDesc reread;
    if (!parse(written, reread, &error)) {
        std::fprintf(stderr, "what was written does not read back: %s\n", qPrintable(error));
        std::abort();
    }
    if (serialize(reread) != written) {
        std::fprintf(stderr, "what was written changes when written again\n");
        std::abort();
    }
    return 0;
}
