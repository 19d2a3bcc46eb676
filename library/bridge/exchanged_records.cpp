// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/record_layouts.h"
#include "NQP2ParserU/ClipListRecords.h"
#include "NQP2ParserU/R8P2TransInfo.h"
#include "platform/guard.h"

#include <limits>
#include <utility>

namespace {

using nqp2::bridge::LeastImage;
using nqp2::bridge::SizeCounter;
using nqp2::bridge::WireReader;
using nqp2::bridge::WireWriter;
using nqp2::platform::Guarded;

constexpr std::uint64_t kNoEnd = std::numeric_limits<std::uint64_t>::max();

template <class Record>
std::int32_t ImageSize(const Record& record) {
    return Guarded(0, [&] {
        SizeCounter counter;
        counter(record);
        return static_cast<std::int32_t>(counter.Image());
    });
}

template <class Record>
std::int32_t SaveAndAdvance(unsigned char*& buffer, const Record& record) {
    if (buffer == nullptr) {
        return 0;
    }
    return Guarded(0, [&] {
        WireWriter writer(buffer, kNoEnd);
        writer(record);
        buffer += writer.Written();
        return static_cast<std::int32_t>(writer.Written());
    });
}

template <class Record>
std::int32_t RestoreAndAdvance(unsigned char*& buffer, std::uint64_t length, Record& record) {
    if (buffer == nullptr) {
        return 0;
    }
    return Guarded(0, [&] {
        WireReader reader(buffer, length);
        Record restored;
        reader(restored);
        if (reader.Read() > 0) {
            record = std::move(restored);
            buffer += reader.Read();
        }
        return static_cast<std::int32_t>(reader.Read());
    });
}

/// Stores the byte count where the caller asks for it; the result of the call.
std::int32_t Told(std::uint64_t bytes, std::uint32_t* count) {
    if (count != nullptr) {
        *count = static_cast<std::uint32_t>(bytes);
    }
    return bytes > 0 ? 1 : 0;
}

std::uint64_t FormatSize() {
    return LeastImage<tag_NQFileFormatEx>();
}

} // namespace

std::int32_t _BLCLIP::GetSize() const {
    return ImageSize(*this);
}

std::int32_t _BLCLIP::SaveToBuf(unsigned char*& buffer) const {
    return SaveAndAdvance(buffer, *this);
}

// Without a length the image is trusted: kept, hosts rely on it.
std::int32_t _BLCLIP::RestoreFromBuf(unsigned char*& buffer) {
    return RestoreAndAdvance(buffer, kNoEnd, *this);
}

std::int32_t _BLCLIP::RestoreFromBuf(unsigned char*& buffer, std::int32_t length) {
    return length > 0 ? RestoreAndAdvance(buffer, static_cast<std::uint64_t>(length), *this) : 0;
}

std::int32_t _NQBRDBROKENPOINT::GetSize() const {
    return ImageSize(*this);
}

std::int32_t _NQBRDBROKENPOINT::SaveToBuf(unsigned char*& buffer) const {
    return SaveAndAdvance(buffer, *this);
}

std::int32_t _NQBRDBROKENPOINT::RestoreFromBuf(unsigned char*& buffer) {
    return RestoreAndAdvance(buffer, kNoEnd, *this);
}

void NQ_InitFileFormat(tag_NQFileFormatEx& format) noexcept {
    format = {};
}

std::int32_t NQ_GetFileFormatDataSize(const tag_NQFileFormatEx& /*format*/) noexcept {
    return static_cast<std::int32_t>(FormatSize());
}

std::int32_t NQ_SaveFileFormatData(unsigned char* target, const tag_NQFileFormatEx& format,
                                   std::uint32_t* count) noexcept {
    WireWriter writer(target, target != nullptr ? FormatSize() : 0);
    writer(format);
    return Told(writer.Written(), count);
}

std::int32_t NQ_RestoreFileFormatData(const unsigned char* source, tag_NQFileFormatEx& format,
                                      std::uint32_t* count) noexcept {
    if (source == nullptr) {
        return Told(0, count);
    }
    // Only reading a text writes to the source, and a format has none.
    WireReader reader(const_cast<unsigned char*>(source), FormatSize());
    reader(format);
    return Told(reader.Read(), count);
}
