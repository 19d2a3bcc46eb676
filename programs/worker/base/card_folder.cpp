// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/base/card_folder.h"

#include "copy/failure.h"
#include "media/card_layout.h"
#include "platform/file_system.h"
#include "platform/unicode.h"

#include <algorithm>
#include <string_view>

namespace nqp2::worker {
namespace {

bool HoldsParentStep(std::string_view path) {
    while (!path.empty()) {
        const std::size_t slash = std::min(path.find('/'), path.size());
        if (path.substr(0, slash) == "..") {
            return true;
        }
        path.remove_prefix(std::min(slash + 1, path.size()));
    }
    return false;
}

bool IsControl(wchar_t ch) {
    return ch < L' ' || ch == L'\x7f';
}

bool IsClipName(const CString& name) {
    constexpr int kLongest = 240;
    const std::wstring_view text = name.View();
    return !text.empty() && name.GetLength() <= kLongest && text.front() != L'.' &&
           media::IsPlainName(name) && std::none_of(text.begin(), text.end(), IsControl);
}

copy::Failure NoContents(const std::string& card) {
    return copy::Failure("There is no CONTENTS folder in " + card + ".");
}

} // namespace

void CheckClipName(const CString& name) {
    if (!IsClipName(name)) {
        throw copy::Failure("\"" + Shown(name) + "\" is no name of a clip.");
    }
}

void CheckFileName(const CString& name) {
    if (!IsClipName(name)) {
        throw copy::Failure("\"" + Shown(name) + "\" is no name for a file on every system.");
    }
}

platform::Place RootOf(const CString& root) {
    platform::Place place(media::WithDrive(root));
    if (!place.OnDisk().starts_with('/')) {
        throw copy::Failure("\"" + Shown(root) +
                            "\" is neither an absolute folder nor a known drive.");
    }
    if (HoldsParentStep(place.OnDisk())) {
        throw copy::Failure("\"" + Shown(root) + "\" leads upward, which a root must not.");
    }
    return place;
}

CardFolders OpenCard(const CString& root) {
    const platform::Place place = RootOf(root);
    const std::string& path = place.OnDisk();
    CardFolders card;
    card.written = place.PathOf(media::kContents.Text());
    copy::Require(platform::Files().OpenFolder(path, card.root), "open the card", path);
    const platform::IoStatus status =
        OpenBelow(*card.root, media::kContents.Bytes(), card.contents);
    if (status.error == platform::IoError::NotFound) {
        throw NoContents(path);
    }
    copy::Require(status, "open", platform::PathIn(path, media::kContents.Bytes()));
    return card;
}

platform::Place FindContents(const CString& root) {
    const platform::Place card = RootOf(root);
    const platform::Place contents = card.Below(media::kContents.Path());
    if (!contents.Exists()) {
        throw NoContents(card.OnDisk());
    }
    return contents;
}

std::optional<std::string> FindFile(const CString& path) {
    std::string file = platform::PathOnDisk(path);
    platform::FileInfo info;
    // A relative path would be another one in the host's folder.
    const bool isFile = file.starts_with('/') && platform::Files().Stat(file, info) &&
                        info.kind == platform::EntryKind::File;
    return isFile ? std::optional(std::move(file)) : std::nullopt;
}

std::string Shown(const CString& text) {
    return platform::Utf8FromText(text.View());
}

} // namespace nqp2::worker
