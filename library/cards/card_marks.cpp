// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "cards/card_marks.h"

#include "platform/case_fold.h"
#include "platform/file_system.h"
#include "platform/unicode.h"
#include "platform/volume.h"

#include <algorithm>
#include <array>

namespace nqp2::cards {
namespace {

using platform::Place;

constexpr std::array<CardMark, 6> kMarks = {{
    {CardKind::P2, media::kContents},
    {CardKind::Avchd, media::kAvchd},
    {CardKind::Avchd, media::kDisc},
    {CardKind::Camera, media::kSonyCamera.known},
    {CardKind::Camera, media::kPanasonicCameras[0].known},
    {CardKind::Camera, media::kPanasonicCameras[1].known},
}};

/// Step by step, so that one listing of the root serves all marks.
Place PlaceOf(const CardMark& mark, const Place& root) {
    Place place = root;
    for (std::string_view steps = mark.folder.Bytes(); !steps.empty();) {
        const std::string_view step = steps.substr(0, steps.find('/'));
        place = place.Below(platform::TextFromUtf8(std::string(step) + '\\'));
        steps.remove_prefix(std::min(step.size() + 1, steps.size()));
    }
    return place;
}

/// The volume's top that a card begins at; "" for a folder among others.
std::string VolumeTop(const std::string& root) {
    for (const std::string& top : {root, IsPrivate(root) ? root + "/.." : root}) {
        platform::FileInfo info;
        platform::FileInfo above;
        if (platform::Files().Stat(top, info) && platform::Files().Stat(top + "/..", above) &&
            info.device != above.device) {
            return top;
        }
    }
    return {};
}

CString VolumeNameAt(const std::string& top, const char* names) {
    return platform::TextFromUtf8(platform::VolumeName(top, names));
}

} // namespace

std::span<const CardMark> CardMarks() {
    return kMarks;
}

std::string_view FirstStep(const CardMark& mark) {
    const std::string_view steps = mark.folder.Bytes();
    return steps.substr(0, steps.find('/'));
}

bool IsPrivate(const std::string& path) {
    return platform::FoldNameCase(platform::NamePart(path)) == media::kPrivate.Bytes();
}

bool Holds(std::uint32_t kinds, CardKind kind) {
    return (kinds & static_cast<std::uint32_t>(kind)) != 0;
}

std::vector<const CardMark*> MarksIn(const Place& root, std::uint32_t kinds) {
    std::vector<const CardMark*> found;
    for (const CardMark& mark : kMarks) {
        if (Holds(kinds, mark.kind) && PlaceOf(mark, root).Exists()) {
            found.push_back(&mark);
            // One scan reads AVCHD and camera files.
            kinds &= mark.kind == CardKind::P2 ? ~kP2Cards : kP2Cards;
        }
    }
    return found;
}

FoundCard CardAt(const Place& root, const CString& written, const CardMark& mark) {
    FoundCard card;
    card.root = written;
    card.kind = mark.kind;
    platform::FileInfo info;
    if (platform::Files().Stat(PlaceOf(mark, root).OnDisk(), info)) {
        card.device = info.device;
        card.inode = info.inode;
    }
    if (const std::string top = VolumeTop(root.OnDisk()); !top.empty()) {
        card.serialNo = VolumeNameAt(top, platform::kVolumeSerials);
        card.label = VolumeNameAt(top, platform::kVolumeLabels);
    }
    return card;
}

} // namespace nqp2::cards
