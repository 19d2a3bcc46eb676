// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/card_requests.h"

#include "platform/unicode.h"
#include "worker/base/card_folder.h"
#include "worker/clip_files.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nqp2::worker {
namespace {

using platform::PathIn;

constexpr std::size_t kBytesPerPixel = 3;
constexpr std::uint32_t kHeadSize = 14 + sizeof(BITMAPINFOHEADER);

void Put(std::string& bytes, std::uint32_t value, int width) {
    for (int i = 0; i < width; ++i) {
        bytes += static_cast<char>(value >> (8U * static_cast<unsigned>(i)));
    }
}

std::string Head(const SIZE& size, std::uint32_t imageSize) {
    constexpr std::uint32_t kPixelsPerMeter = 2835; // 72 to the inch
    std::string head = "BM";
    Put(head, kHeadSize + imageSize, 4);
    Put(head, 0, 4);
    Put(head, kHeadSize, 4);
    Put(head, sizeof(BITMAPINFOHEADER), 4);
    Put(head, static_cast<std::uint32_t>(size.cx), 4);
    Put(head, static_cast<std::uint32_t>(size.cy), 4);
    Put(head, 1, 2);  // planes
    Put(head, 24, 2); // bits a pixel
    Put(head, 0, 4);  // not compressed
    Put(head, imageSize, 4);
    Put(head, kPixelsPerMeter, 4);
    Put(head, kPixelsPerMeter, 4);
    Put(head, 0, 4); // no palette
    Put(head, 0, 4);
    return head;
}

bool IsSide(std::int32_t side) {
    constexpr std::int32_t kLargest = 4096;
    return side > 0 && side <= kLargest;
}

/// The bottom row first; each filled up to a multiple of four bytes.
std::string MakeBitmap(std::string_view pixels, const SIZE& size) {
    if (!IsSide(size.cx) || !IsSide(size.cy)) {
        throw copy::Failure("An icon of " + std::to_string(size.cx) + " x " +
                            std::to_string(size.cy) + " pixels cannot be made.");
    }
    const std::size_t row = static_cast<std::size_t>(size.cx) * kBytesPerPixel;
    const std::size_t padded = (row + 3) / 4 * 4;
    const auto rows = static_cast<std::size_t>(size.cy);
    if (pixels.size() != row * rows) {
        throw copy::Failure("An icon needs " + std::to_string(row * rows) + " bytes of pixels, " +
                            std::to_string(pixels.size()) + " came.");
    }
    std::string bitmap = Head(size, static_cast<std::uint32_t>(padded * rows));
    for (std::size_t i = 0; i < rows; ++i) {
        bitmap.append(pixels.substr(i * row, row)).append(padded - row, '\0');
    }
    return bitmap;
}

/// Fails unless the card holds the clip's metadata.
void RequireClip(platform::Folder& contents, const CString& clipName) {
    std::string found;
    std::unique_ptr<platform::Folder> folder;
    platform::IoStatus status = OpenBelow(contents, media::kMetadataFiles.folder.Bytes(), folder);
    if (status) {
        status = FindIn(*folder, MetadataName(clipName), found);
    }
    if (status.error == platform::IoError::NotFound) {
        throw MissingClip(contents.Path(), clipName);
    }
    copy::Require(status, "look for the clip " + Shown(clipName) + " in", contents.Path());
}

/// Replaces the icon of that name, and takes away what was left of one that a killed worker wrote.
void PutIcon(platform::Folder& contents, const std::string& name, const std::string& bitmap) {
    std::unique_ptr<platform::Folder> folder;
    const char* const icons = media::kIconFiles.folder.Bytes();
    copy::Require(MakeBelow(contents, icons, folder), "write", PathIn(contents.Path(), icons));
    static_cast<void>(folder->RemoveAbandoned());
    std::string target;
    copy::Require(FindTargetIn(*folder, name, target), "write", PathIn(folder->Path(), name));
    copy::Require(folder->WriteWhole(target, bitmap), "write", PathIn(folder->Path(), target));
}

void RemoveFrom(platform::Folder& contents, const std::string& placed,
                const std::vector<std::string>& names) {
    std::unique_ptr<platform::Folder> folder;
    std::string failed = names.front();
    platform::IoStatus status = contents.OpenFolder(placed, folder);
    if (status) {
        status = folder->RemoveFiles(names, failed);
    }
    copy::Require(status, "delete", PathIn(PathIn(contents.Path(), placed), failed));
}

/// Folder by folder, from the metadata's on, which is the last of the clip's.
void RemoveFiles(platform::Folder& contents, const std::vector<ClipFile>& files) {
    std::optional<copy::Failure> failure;
    for (auto file = files.rbegin(); file != files.rend();) {
        const ClipFile& first = *file;
        std::vector<std::string> names;
        for (; file != files.rend() && file->placed == first.placed; ++file) {
            names.push_back(file->name);
        }
        try {
            RemoveFrom(contents, first.placed, names);
        } catch (const copy::Failure& caught) {
            if (first.part == ClipPart::Metadata) {
                throw;
            }
            failure = failure.value_or(caught);
        }
    }
    if (failure) {
        throw copy::Failure(*failure);
    }
}

} // namespace

void DeleteClip(const CString& clipName, const CString& cardRoot) {
    CheckClipName(clipName);
    const CardFolders card = OpenCard(cardRoot);
    // A card on which no name can be kept, a full one for instance, is cleared all the same.
    std::unique_ptr<platform::NameLock> lock;
    if (card.root->LockName(Shown(clipName), lock).error == platform::IoError::Busy) {
        throw copy::Failure("A transfer is working on " + Shown(clipName) + " in " +
                            card.root->Path() + ".");
    }
    const auto files = FindClipFiles(ListInFolder(card.contents.get()), {&clipName, 1});
    if (files.front().empty()) {
        throw MissingClip(card.contents->Path(), clipName);
    }
    RemoveFiles(*card.contents, files.front());
}

void WriteIcon(const CString& cardRoot, const CString& clipName, std::string_view pixels,
               const SIZE& size) {
    const std::string bitmap = MakeBitmap(pixels, size);
    CheckClipName(clipName);
    const CardFolders card = OpenCard(cardRoot);
    RequireClip(*card.contents, clipName);
    const CString name = media::FileNameOf(media::kIconFiles, clipName);
    PutIcon(*card.contents, platform::NameBytesFromText(name.View()), bitmap);
}

} // namespace nqp2::worker
