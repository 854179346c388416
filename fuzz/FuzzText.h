#pragma once

#include "core/app/TextFile.h"

#include <QStringList>
#include <cstdint>
#include <optional>

// The fuzzer's bytes read as a text file of ours would be: decoded, then split into lines.
// Empty when the bytes are not text the program would accept.
inline std::optional<QStringList> fuzzLines(const uint8_t* data, size_t size) {
    const QByteArrayView bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const quillora::TextFile::Decoded d = quillora::TextFile::decode(bytes);
    if (!d.ok())
        return std::nullopt;
    return quillora::TextFile::splitLines(d.text);
}
