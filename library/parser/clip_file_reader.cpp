// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/clip_files.h"
#include "clips/clip_files.h"
#include "media/card_layout.h"
#include "NQP2ParserU/ClipFiles.h"
#include "platform/file_tally.h"
#include "platform/guard.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace nqp2 {

namespace {

LooseKind KindOf(platform::EntryKind kind) {
    return kind == platform::EntryKind::File   ? LooseKind::File
           : kind == platform::EntryKind::Link ? LooseKind::Link
                                               : LooseKind::Special;
}

} // namespace

struct ClipFileReader::State {
    explicit State(const CString& root) : tally(platform::Place(media::WithDrive(root))) {}

    platform::FileTally tally;
    clips::P2ClipFiles p2{tally};

    void Append(const _tag_P2Clip& clip, CArray<ClipFile>& files) {
        if (clip.SourceKind == 0) {
            p2.Append(clip, files);
        } else {
            avchd::AppendClipFiles(clip, tally, files);
        }
    }

    bool TellRest(const platform::Place& top, CArray<LooseFile>& files) {
        std::vector<platform::RestFile> rest;
        const bool isWhole = tally.RestBelow(top, rest);
        std::sort(rest.begin(), rest.end(),
                  [](const auto& left, const auto& right) { return left.path < right.path; });
        files.Reserve(static_cast<std::int64_t>(rest.size()));
        for (platform::RestFile& each : rest) {
            files.Add({std::move(each.path), each.size, KindOf(each.kind)});
        }
        return isWhole;
    }
};

ClipFileReader::ClipFileReader(const CString& root) noexcept
    : m_state(platform::Guarded(std::unique_ptr<State>(),
                                [&] { return std::make_unique<State>(root); })) {}

ClipFileReader::~ClipFileReader() = default;

clips::ClipPromises* ClipFileReader::Promises() noexcept {
    return m_state != nullptr ? &m_state->p2.Promises() : nullptr;
}

bool ClipFileReader::Read(const _tag_P2Clip& clip, CArray<ClipFile>& files) noexcept {
    files.RemoveAll();
    const bool isRead = platform::Guarded(false, [&] {
        if (m_state != nullptr) {
            m_state->Append(clip, files);
        }
        return m_state != nullptr;
    });
    if (!isRead) {
        files.RemoveAll();
    }
    return isRead;
}

bool ClipFileReader::LooseFiles(CArray<LooseFile>& files) noexcept {
    files.RemoveAll();
    return platform::Guarded(false, [&] {
        return m_state != nullptr && m_state->TellRest(m_state->tally.Root(), files);
    });
}

bool ClipFileReader::LooseFiles(CArray<LooseFile>& files, const CString& top) noexcept {
    files.RemoveAll();
    return platform::Guarded(false, [&] {
        return m_state != nullptr &&
               m_state->TellRest(platform::Place(media::WithDrive(top)), files);
    });
}

bool IsWhole(const CArray<ClipFile>& files) noexcept {
    return std::all_of(files.begin(), files.end(), [](const ClipFile& file) {
        const bool isNeeded = file.role == ClipFileRole::Video ||
                              file.role == ClipFileRole::Audio ||
                              file.role == ClipFileRole::Metadata;
        return !isNeeded || file.state == ClipFileState::Present;
    });
}

} // namespace nqp2
