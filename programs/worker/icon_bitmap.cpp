// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/icon_bitmap.h"

#include "platform/unicode.h"
#include "worker/card_folder.h"
#include "worker/clip_files.h"

#include <cstdint>

namespace nqp2::worker {
namespace {

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

/// Fails unless the card holds the clip's metadata.
Outcome RequireClip(platform::Folder& contents, const CString& clipName) {
    std::string found;
    std::unique_ptr<platform::Folder> folder;
    platform::IoStatus status = OpenBelow(contents, "CLIP", folder);
    if (status) {
        status = FindIn(*folder, platform::NameBytesFromText(clipName.View()) + ".XML", found);
    }
    if (status.error == platform::IoError::NotFound) {
        return MissingClip(contents.Path(), clipName);
    }
    return status
               ? Outcome()
               : Failure("look for the clip " + Shown(clipName) + " in", contents.Path(), status);
}

/// Replaces the icon of that name, and takes away what was left of one that a killed worker wrote.
Outcome PutIcon(platform::Folder& contents, const std::string& name, const std::string& bitmap) {
    std::unique_ptr<platform::Folder> folder;
    std::string path = contents.Path() + "/ICON";
    platform::IoStatus status = MakeBelow(contents, "ICON", folder);
    std::string target;
    if (status) {
        static_cast<void>(folder->RemoveAbandoned());
        path = folder->Path() + "/" + name;
        status = FindTargetIn(*folder, name, target);
    }
    if (status) {
        path = folder->Path() + "/" + target;
        status = folder->WriteWhole(target, bitmap);
    }
    return status ? Outcome() : Failure("write", path, status);
}

bool IsSide(std::int32_t side) {
    constexpr std::int32_t kLargest = 4096;
    return side > 0 && side <= kLargest;
}

} // namespace

Outcome MakeBitmap(std::string_view pixels, const SIZE& size, std::string& bitmap) {
    if (!IsSide(size.cx) || !IsSide(size.cy)) {
        return Failure("An icon of " + std::to_string(size.cx) + " x " + std::to_string(size.cy) +
                       " pixels cannot be made.");
    }
    const std::size_t row = static_cast<std::size_t>(size.cx) * kBytesPerPixel;
    const std::size_t padded = (row + 3) / 4 * 4;
    const auto rows = static_cast<std::size_t>(size.cy);
    if (pixels.size() != row * rows) {
        return Failure("An icon needs " + std::to_string(row * rows) + " bytes of pixels, " +
                       std::to_string(pixels.size()) + " came.");
    }
    bitmap = Head(size, static_cast<std::uint32_t>(padded * rows));
    for (std::size_t i = 0; i < rows; ++i) {
        bitmap.append(pixels.substr(i * row, row)).append(padded - row, '\0');
    }
    return {};
}

Outcome WriteIcon(const CString& cardRoot, const CString& clipName, std::string_view pixels,
                  const SIZE& size) {
    std::string bitmap;
    CardFolders card;
    Outcome outcome = MakeBitmap(pixels, size, bitmap);
    if (outcome) {
        outcome = CheckClipName(clipName);
    }
    if (outcome) {
        outcome = OpenCard(cardRoot, card);
    }
    if (outcome) {
        outcome = RequireClip(*card.contents, clipName);
    }
    if (!outcome) {
        return outcome;
    }
    return PutIcon(*card.contents, platform::NameBytesFromText(clipName.View()) + ".BMP", bitmap);
}

} // namespace nqp2::worker
