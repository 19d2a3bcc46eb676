// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card_clip.h"

#include "console/console.h"
#include "nqp2/clip_hint.h"
#include "nqp2/clip_sizes.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/TextBytes.h"

#include <filesystem>
#include <string>

namespace nqp2::tool {
namespace {

/// Whether a clip's name can stand in a path.
bool IsPlain(const CString& name) {
    return !name.IsEmpty() && BytesFromText(name).find_first_of("/\\:") == std::string::npos;
}

} // namespace

std::optional<CardClip> FindCardClip(ReadyParser& parser, const Card& card, const CString& name) {
    _tag_P2Clip clip;
    if (!IsPlain(name) || parser->LoadClipInfo(card.Root(), name, clip) != 0) {
        return std::nullopt;
    }
    // Scans take the file's name for the clip's.
    const std::filesystem::path file = RealPath(clip.XmlPath);
    return CardClip{TextFromBytes(file.stem().native()), clip.GlobalClipID};
}

bool HasFilesOfClip(const Card& card, const CString& name) {
    return IsPlain(name) && ClipSizes(card).Of(BytesFromText(name)).files > 0;
}

void ThrowNoCardClip(const Card& card, const CString& name, const std::string& place,
                     const std::string& advice) {
    const std::string shown = BytesFromText(name);
    const std::string hint = IsPlain(name) ? ClipHint(card, {shown}) : "";
    throw Failure(card.Folder(), "no clip " + shown + place, hint.empty() ? advice : hint);
}

} // namespace nqp2::tool
