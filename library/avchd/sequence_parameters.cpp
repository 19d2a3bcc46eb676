// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/stream_head.h"

#include "avchd/limits.h"

#include <algorithm>
#include <iterator>

namespace nqp2::avchd {
namespace {

/// Reads the bits of an H.264 unit (ITU-T H.264, 7.2 and 9.1), emulation bytes undone. Reading
/// beyond the end, and a number that no 32 bits hold, give zeros and leave the reader bad for good.
class BitReader {
public:
    explicit BitReader(Bytes bytes) : m_bytes(bytes) {}

    [[nodiscard]] bool IsGood() const { return m_good; }
    bool Bit();
    /// Up to 32 bits.
    std::uint32_t Bits(int count);
    /// A number of variable length, without and with sign.
    std::uint32_t Unsigned();
    std::int32_t Signed();

private:
    Bytes m_bytes;
    std::size_t m_position = 0; ///< in bits
    bool m_good = true;
};

bool BitReader::Bit() {
    const std::size_t byte = m_position / 8;
    m_good = m_good && byte < m_bytes.size();
    if (!m_good) {
        return false;
    }
    const auto shift = static_cast<unsigned>(7 - m_position % 8);
    ++m_position;
    return (static_cast<unsigned>(m_bytes[byte]) >> shift & 1U) != 0;
}

std::uint32_t BitReader::Bits(int count) {
    std::uint32_t number = 0;
    for (int i = 0; i < count; ++i) {
        number = number << 1U | (Bit() ? 1U : 0U);
    }
    return number;
}

std::uint32_t BitReader::Unsigned() {
    int zeros = 0;
    while (!Bit()) {
        ++zeros;
        m_good = m_good && zeros <= kMaxLeadingZeros;
        if (!m_good) {
            return 0;
        }
    }
    const std::uint32_t rest = Bits(zeros);
    return m_good ? (std::uint32_t{1} << static_cast<unsigned>(zeros)) - 1 + rest : 0;
}

std::int32_t BitReader::Signed() {
    const std::uint32_t code = Unsigned();
    const auto half = static_cast<std::int32_t>(code / 2);
    return code % 2 != 0 ? half + 1 : -half;
}

constexpr std::uint32_t kMacroblock = 16;

/// Profiles whose sets tell chroma format and bit depth.
constexpr std::uint32_t kHighProfiles[] = {100, 110, 122, 244, 44, 83, 86, 118, 128};

struct Shape {
    std::uint32_t width;
    std::uint32_t height;
};

/// By index, from 0 for "not told".
constexpr Shape kShapes[] = {{0, 0},   {1, 1},    {12, 11}, {10, 11}, {16, 11}, {40, 33},
                             {24, 11}, {20, 11},  {32, 11}, {80, 33}, {18, 11}, {15, 11},
                             {64, 33}, {160, 99}, {4, 3},   {3, 2},   {2, 1}};
constexpr std::uint32_t kOwnShape = 255;

/// How chroma is sampled: picture elements and lines to a chroma sample.
struct Chroma {
    std::uint32_t format = 1; // 0 none, 1 4:2:0, 2 4:2:2, 3 4:4:4
    [[nodiscard]] std::uint32_t Across() const { return format == 1 || format == 2 ? 2 : 1; }
    [[nodiscard]] std::uint32_t Down() const { return format == 1 ? 2 : 1; }
};

void SkipScalingList(BitReader& reader, int size) {
    std::int32_t next = 8;
    for (int i = 0; i < size && next != 0 && reader.IsGood(); ++i) {
        constexpr std::int32_t kRange = 256;
        // A step outside of one byte's range is impossible, and must not run over.
        const std::int32_t step = std::clamp(reader.Signed(), -kRange, kRange);
        next = (next + step + kRange) % kRange;
    }
}

void SkipScalingLists(BitReader& reader, const Chroma& chroma) {
    const int lists = chroma.format == 3 ? 12 : 8;
    for (int list = 0; list < lists && reader.IsGood(); ++list) {
        if (reader.Bit()) {
            SkipScalingList(reader, list < 6 ? 16 : 64);
        }
    }
}

/// Reads what only high profiles have. Returns false for what cannot be.
bool ReadHighFields(BitReader& reader, Chroma& chroma, SequenceParameters& parameters) {
    chroma.format = reader.Unsigned();
    if (chroma.format == 3) {
        chroma.format = reader.Bit() ? 0 : 3; // three separate planes sample like one
    }
    const std::uint32_t extraDepth = reader.Unsigned();
    reader.Unsigned(); // chroma's depth
    reader.Bit();
    if (reader.Bit()) {
        SkipScalingLists(reader, chroma);
    }
    parameters.bitDepth += static_cast<std::int32_t>(std::min(extraDepth, kMaxExtraBitDepth));
    return chroma.format <= 3 && extraDepth <= kMaxExtraBitDepth;
}

void SkipPictureOrder(BitReader& reader) {
    const std::uint32_t type = reader.Unsigned();
    if (type == 0) {
        reader.Unsigned();
    } else if (type == 1) {
        reader.Bit();
        reader.Signed();
        reader.Signed();
        const std::uint32_t frames = reader.Unsigned();
        for (std::uint32_t i = 0; i < frames && reader.IsGood(); ++i) {
            reader.Signed();
        }
    }
}

/// What remains of a side once both its edges are cut off; nothing when that is nothing.
std::optional<std::int32_t> Shown(std::uint32_t side, std::uint64_t cut) {
    return cut < side ? std::optional(static_cast<std::int32_t>(side - cut)) : std::nullopt;
}

bool ReadRaster(BitReader& reader, const Chroma& chroma, SequenceParameters& parameters) {
    const std::uint32_t across = reader.Unsigned();
    const std::uint32_t down = reader.Unsigned();
    const std::uint32_t fields = reader.Bit() ? 1 : 2;
    parameters.isFieldCoded = fields == 2;
    if (parameters.isFieldCoded) {
        reader.Bit();
    }
    reader.Bit();
    std::uint64_t cuts[4] = {}; // left, right, top, bottom
    if (reader.Bit()) {
        std::generate(std::begin(cuts), std::end(cuts), [&] { return reader.Unsigned(); });
    }
    if (!reader.IsGood() || across >= kMaxMacroblocks || down >= kMaxMacroblocks) {
        return false;
    }
    const auto pixels = Shown((across + 1) * kMacroblock, (cuts[0] + cuts[1]) * chroma.Across());
    const auto lines =
        Shown((down + 1) * kMacroblock * fields, (cuts[2] + cuts[3]) * chroma.Down() * fields);
    parameters.pixels = pixels.value_or(0);
    parameters.lines = lines.value_or(0);
    return pixels && lines;
}

void ReadShape(BitReader& reader, SequenceParameters& parameters) {
    const std::uint32_t index = reader.Bits(8);
    Shape shape = index < std::size(kShapes) ? kShapes[index] : Shape{0, 0};
    if (index == kOwnShape) {
        shape.width = reader.Bits(16);
        shape.height = reader.Bits(16);
    }
    if (reader.IsGood()) {
        parameters.shapeWidth = shape.width;
        parameters.shapeHeight = shape.height;
    }
}

void SkipSignalType(BitReader& reader) {
    if (reader.Bit()) { // overscan
        reader.Bit();
    }
    if (reader.Bit()) {
        reader.Bits(3 + 1);
        if (reader.Bit()) {
            reader.Bits(3 * 8); // colours
        }
    }
    if (reader.Bit()) { // where chroma lies
        reader.Unsigned();
        reader.Unsigned();
    }
}

void ReadTiming(BitReader& reader, SequenceParameters& parameters) {
    if (!reader.Bit()) {
        return;
    }
    const std::uint32_t unitsPerTick = reader.Bits(32);
    const std::uint32_t unitsPerSecond = reader.Bits(32);
    if (reader.IsGood()) {
        parameters.unitsPerTick = unitsPerTick;
        parameters.unitsPerSecond = unitsPerSecond;
    }
}

void ReadUsability(BitReader& reader, SequenceParameters& parameters) {
    if (!reader.Bit()) {
        return;
    }
    if (reader.Bit()) {
        ReadShape(reader, parameters);
    }
    SkipSignalType(reader);
    ReadTiming(reader, parameters);
}

} // namespace

std::optional<SequenceParameters> DecodeSequenceParameters(Bytes unit) {
    BitReader reader(unit);
    SequenceParameters parameters;
    Chroma chroma;
    parameters.profile = reader.Bits(8);
    reader.Bits(8 + 8); // constraints, level
    reader.Unsigned();  // number of the set
    const bool isHigh = std::find(std::begin(kHighProfiles), std::end(kHighProfiles),
                                  parameters.profile) != std::end(kHighProfiles);
    if (isHigh && !ReadHighFields(reader, chroma, parameters)) {
        return std::nullopt;
    }
    reader.Unsigned(); // length of frame numbers
    SkipPictureOrder(reader);
    reader.Unsigned(); // reference frames
    reader.Bit();
    if (!ReadRaster(reader, chroma, parameters)) {
        return std::nullopt;
    }
    ReadUsability(reader, parameters);
    return parameters;
}

} // namespace nqp2::avchd
