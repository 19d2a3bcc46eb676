// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/ClipListRecords.h"

#include "bridge/record_layouts.h"
#include "platform/guard.h"

#include <limits>
#include <utility>

namespace {

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
