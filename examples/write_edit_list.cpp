// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include <NQP2ParserU/P2EDL.h>
#include <NQP2ParserU/PathText.h>
#include <NQP2ParserU/ReadyParser.h>
#include <NQP2ParserU/TextBytes.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>

/// Writes an edit list to a card that plays the first frames of some clips, one behind the other:
/// write_edit_list CARD CLIP...

namespace {

/// The beginning of a clip, `offset` frames behind that of the edit.
tag_P2EDLClipTrackEvent Beginning(const _tag_P2Clip& clip, std::int32_t offset) {
    constexpr std::int32_t kMostFrames = 25;
    tag_P2EDLClipTrackEvent event;
    event.Offset = offset;
    event.Duration = std::min(clip.Duration, kMostFrames);
    event.ClipName = clip.ClipName;
    event.GlobalClipID = clip.GlobalClipID;
    event.GlobalClipGuid = clip.GlobalClipGuid;
    // The list gets the clip's own identifier, and not one that is made of its last 32 digits.
    event.Note = clip.GlobalClipID;
    return event;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: write_edit_list CARD CLIP...\n");
        return 2;
    }
    const CString card = nqp2::InterfaceRoot(argv[1]);
    nqp2::ReadyParser parser;
    tag_P2EDL edit;
    for (int i = 2; i < argc; ++i) {
        _tag_P2Clip clip;
        if (parser->LoadClipInfo(card, nqp2::TextFromBytes(argv[i]), clip) != 0) {
            std::fprintf(stderr, "%s: no such clip\n", argv[i]);
            return 1;
        }
        edit.Events.Add(Beginning(clip, edit.Duration));
        edit.Duration += edit.Events[edit.Events.GetUpperBound()].Duration;
    }
    CString saved;
    nqp2::ScanReport report;
    if (parser->SaveCardEdl(card, edit, L"", saved, report) != 0) {
        std::fprintf(stderr, "%s\n", nqp2::BytesFromText(report.failure).c_str());
        return 1;
    }
    std::printf("%s\n", nqp2::PosixPath(saved).c_str());
    return 0;
}
