// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/clip_metadata.h"

#include "clips/clip_content.h"
#include "media/card_layout.h"
#include "NQP2ParserU/PathText.h"
#include "platform/place.h"
#include "platform/unicode.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace nqp2::clips {
namespace {

/// The path of a file of that kind; "" when there is none.
CString PathOf(const platform::Place& contents, const media::ClipFileKind& kind,
               const CString& name) {
    platform::FoundFile file;
    const bool isThere = static_cast<bool>(contents.Below(kind.folder.Path()).Find(name, file));
    return isThere && file.IsReadable() ? file.path : CString();
}

} // namespace

dom::ParseError MetadataFileReader::Read(const CString& path, ClipMetadata& metadata) {
    m_folders.BeginOperation();
    m_events.FillIn(metadata);
    dom::ParseError error = m_walker.Walk(PosixPath(path), m_events); // most are written so
    if (error.fault == dom::Fault::NotFound) {
        error = m_walker.Walk(platform::PathOnDisk(path, &m_folders), m_events);
    }
    m_events.Finish();
    if (error.fault == dom::Fault::None) {
        FindMemoFiles(path, metadata);
    }
    return error;
}

/// Voice recordings are numbered among those of their clip.
void MetadataFileReader::FindMemoFiles(const CString& path, ClipMetadata& metadata) {
    const std::vector<MemoHints>& hints = m_events.Hints();
    const platform::Place contents(media::ContentsAbove(path), &m_folders);
    std::size_t voices = 0;
    for (std::size_t i = 0; i < hints.size(); ++i) {
        MemoMetadata& memo = metadata.memos[static_cast<std::int64_t>(i)];
        for (const CString& name : hints[i].names) {
            const CString voice = PathOf(contents, media::kVoiceFiles, name);
            const CString picture = PathOf(contents, media::kIconFiles, name);
            memo.voicePath = voice.IsEmpty() ? memo.voicePath : voice;
            memo.picturePath = picture.IsEmpty() ? memo.picturePath : picture;
        }
        if (hints[i].hasVoice && memo.voicePath.IsEmpty()) {
            memo.voicePath =
                PathOf(contents, media::kVoiceFiles,
                       VoiceFileOf(media::TitleOf(path), voices, hints[i].voiceFormat));
        }
        voices += hints[i].hasVoice ? 1U : 0U;
    }
}

} // namespace nqp2::clips
