// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/rewrap/picture_check.h"

#include <array>

namespace nqp2::worker::rewrap {
namespace {

// A picture of DV is made of sequences of blocks, each of which tells its section, the number of
// its sequence, and its own number among those of its section (SMPTE ST 314).
constexpr std::size_t kBlock = 80; ///< bytes
constexpr std::size_t kBlocks = 150;
constexpr std::size_t kSequence = kBlock * kBlocks;
constexpr std::size_t kSequences60 = 10; ///< of a channel
constexpr std::size_t kSequences50 = 12;

struct BlockMark {
    std::uint8_t section = 0;
    std::uint8_t number = 0;
};

constexpr std::array<BlockMark, kBlocks> MarksOfSequence() {
    constexpr std::size_t kHeads = 6;  ///< blocks before those of sound and picture
    constexpr std::size_t kGroup = 16; ///< one of sound and those of the picture behind it
    std::array<BlockMark, kBlocks> marks = {{{0, 0}, {1, 0}, {1, 1}, {2, 0}, {2, 1}, {2, 2}}};
    for (std::size_t i = kHeads; i < kBlocks; ++i) {
        const std::size_t group = (i - kHeads) / kGroup;
        const bool isSound = (i - kHeads) % kGroup == 0;
        marks[i].section = isSound ? 3 : 4;
        marks[i].number = static_cast<std::uint8_t>(isSound ? group : i - kHeads - group - 1);
    }
    return marks;
}
constexpr std::array<BlockMark, kBlocks> kMarks = MarksOfSequence();

std::string FaultOfDv(std::string_view unit) {
    const std::size_t sequences = unit.size() / kSequence;
    const std::size_t ofChannel = sequences % kSequences50 == 0   ? kSequences50
                                  : sequences % kSequences60 == 0 ? kSequences60
                                                                  : 0;
    if (unit.size() % kSequence != 0 || sequences == 0 || ofChannel == 0) {
        return "no picture of DV has " + std::to_string(unit.size()) + " bytes";
    }
    for (std::size_t at = 0; at < unit.size(); at += kBlock) {
        const BlockMark& mark = kMarks[at % kSequence / kBlock];
        const auto byte = [&](std::size_t index) {
            return static_cast<std::uint8_t>(unit[at + index]);
        };
        if (byte(0) >> 5U != mark.section || byte(1) >> 4U != at / kSequence % ofChannel ||
            byte(2) != mark.number) {
            return "its DV is broken at byte " + std::to_string(at);
        }
    }
    return {};
}

} // namespace

PictureCheck::PictureCheck(Essence essence, const MediaStream& stream, bool areSingle)
    : m_essence(essence), m_form(UnitForm::Of(stream.parameterSets)), m_areSingle(areSingle) {}

std::string PictureCheck::FaultOf(std::string_view unit) {
    return m_essence == Essence::Dv ? FaultOfDv(unit) : FaultOfH264(unit);
}

/// AVC-Intra cuts all pictures into as many slices; other streams do not.
std::string PictureCheck::FaultOfH264(std::string_view unit) {
    const UnitShape shape = ShapeOf(unit, m_form);
    if (!shape.fault.empty()) {
        return shape.fault;
    }
    if (m_areSingle && shape.pictures > 1) {
        return "it holds " + std::to_string(shape.pictures) + " pictures";
    }
    if (m_slices == 0) {
        m_slices = shape.slices;
    }
    return m_essence == Essence::AvcIntra && shape.slices < m_slices
               ? "it has " + std::to_string(shape.slices) + " of " + std::to_string(m_slices) +
                     " slices"
               : "";
}

} // namespace nqp2::worker::rewrap
