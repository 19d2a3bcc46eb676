// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/clip_files.h"

#include "avchd/clip_information.h"
#include "avchd/clip_source.h"
#include "media/card_layout.h"
#include "platform/case_fold.h"
#include "platform/file_system.h"
#include "platform/unicode.h"

#include <cstdint>
#include <optional>
#include <string>

namespace nqp2::avchd {
namespace {

using platform::FileTally;
using platform::Place;
using platform::TalliedFolder;

/// Appends one file, promised or there.
void AppendFile(TalliedFolder& folder, const CString& name, ClipFileRole role,
                std::uint64_t promised, CArray<ClipFile>& files) {
    ClipFile file;
    file.role = role;
    file.promisedSize = promised;
    const std::size_t entry = folder.Find(platform::NameBytesFromText(name.View()));
    platform::FileInfo info;
    if (entry != TalliedFolder::kNone && folder.Take(entry, info)) {
        file.path = folder.PathOf(entry);
        file.size = info.size;
        file.state = media::StateOf(info.size, promised);
    } else {
        file.path = folder.Where().PathOf(name);
        file.state = ClipFileState::Missing;
    }
    files.Add(std::move(file));
}

std::uint64_t PromisedSize(const TalliedFolder& folder, const CString& name) {
    const std::size_t entry = folder.Find(platform::NameBytesFromText(name.View()));
    std::string head;
    const bool isRead =
        entry != TalliedFolder::kNone &&
        platform::ReadHead(platform::Files(), folder.OnDisk(entry), kStreamSizeHead, head);
    return isRead ? StreamSizeIn(BytesIn(head)) : 0;
}

/// The folder of the card's that has that name; null when none has.
TalliedFolder* CameraFolderWith(const std::string& name, FileTally& tally) {
    const auto hasIt = [&](const media::CameraFolder& camera) {
        const Place place = tally.Root().Below(camera.files.BelowDrive());
        return place.Exists() && tally.Folder(place).Find(name) != TalliedFolder::kNone
                   ? &tally.Folder(place)
                   : nullptr;
    };
    if (TalliedFolder* const folder = hasIt(media::kSonyCamera)) {
        return folder;
    }
    for (const media::CameraFolder& camera : media::kPanasonicCameras) {
        if (TalliedFolder* const folder = hasIt(camera)) {
            return folder;
        }
    }
    return nullptr;
}

} // namespace

const CardKind* KindOf(const _tag_P2Clip& clip, const Place& folder) {
    const auto isOf = [&](const CardKind& kind) {
        const std::wstring_view extension = kind.files.stream.Text();
        const std::wstring_view path = clip.VideoPath.View();
        if (!path.empty()) {
            return path.size() > extension.size() &&
                   platform::EqualNoCase(path.substr(path.size() - extension.size()), extension);
        }
        return FileIn(folder.Below(media::kClipInformation.Path()),
                      clip.ClipName + kind.files.information.Text())
            .has_value();
    };
    return isOf(kAvchdCard) ? &kAvchdCard : isOf(kDisc) ? &kDisc : nullptr;
}

void AppendClipFiles(const _tag_P2Clip& clip, FileTally& tally, CArray<ClipFile>& files) {
    const Place card = ClipsFolder(tally.Root());
    if (const CardKind* const kind = KindOf(clip, card)) {
        TalliedFolder& information = tally.Folder(card.Below(media::kClipInformation.Path()));
        TalliedFolder& streams = tally.Folder(card.Below(media::kStreams.Path()));
        const CString informationName = clip.ClipName + kind->files.information.Text();
        AppendFile(streams, clip.ClipName + kind->files.stream.Text(), ClipFileRole::Video,
                   PromisedSize(information, informationName), files);
        AppendFile(information, informationName, ClipFileRole::Metadata, 0, files);
        return;
    }
    const CString name = clip.VideoPath.Mid(clip.VideoPath.ReverseFind(L'\\') + 1);
    if (TalliedFolder* const folder =
            CameraFolderWith(platform::NameBytesFromText(name.View()), tally)) {
        AppendFile(*folder, name, ClipFileRole::Video, 0, files);
    }
}

} // namespace nqp2::avchd
