// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/R8P2TransInfo.h"

#include "bridge/record_layouts.h"

namespace {

using nqp2::bridge::LeastImage;
using nqp2::bridge::WireReader;
using nqp2::bridge::WireWriter;

/// Stores the byte count where the caller asks for it; the result of the call.
std::int32_t Told(std::uint64_t bytes, std::uint32_t* count) {
    if (count != nullptr) {
        *count = static_cast<std::uint32_t>(bytes);
    }
    return bytes > 0 ? 1 : 0;
}

std::uint64_t ImageSize() {
    return LeastImage<tag_NQFileFormatEx>();
}

} // namespace

void NQ_InitFileFormat(tag_NQFileFormatEx& format) noexcept {
    format = {};
}

std::int32_t NQ_GetFileFormatDataSize(const tag_NQFileFormatEx& /*format*/) noexcept {
    return static_cast<std::int32_t>(ImageSize());
}

std::int32_t NQ_SaveFileFormatData(unsigned char* target, const tag_NQFileFormatEx& format,
                                   std::uint32_t* count) noexcept {
    WireWriter writer(target, target != nullptr ? ImageSize() : 0);
    writer(format);
    return Told(writer.Written(), count);
}

std::int32_t NQ_RestoreFileFormatData(const unsigned char* source, tag_NQFileFormatEx& format,
                                      std::uint32_t* count) noexcept {
    if (source == nullptr) {
        return Told(0, count);
    }
    // Only reading a text writes to the source, and a format has none.
    WireReader reader(const_cast<unsigned char*>(source), ImageSize());
    reader(format);
    return Told(reader.Read(), count);
}
