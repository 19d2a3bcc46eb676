// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/free_name.h"

#include "media/card_layout.h"
#include "NQP2ParserU/PathText.h"
#include "platform/folder_index.h"
#include "platform/unicode.h"

namespace nqp2::clips {
namespace {

constexpr const wchar_t* kFirstName = L"0001AA";

struct Wheel {
    int position;
    wchar_t limit;
};

// Turned in this order: the sixth character first.
constexpr Wheel kWheels[] = {{5, L'Z'}, {4, L'Z'}, {3, L'9'}, {2, L'9'}};

} // namespace

bool AdvanceName(CString& name) {
    for (const Wheel& wheel : kWheels) {
        const wchar_t ch = name.GetAt(wheel.position);
        if (ch != wheel.limit) {
            name.SetAt(wheel.position, static_cast<wchar_t>(ch + 1));
            return true;
        }
    }
    return false;
}

bool FindFreeName(const CString& root, CString& name, std::int64_t& tried) {
    const platform::FolderIndex videos =
        platform::FolderIndex::Read(PosixPath(media::ContentsFolder(root) + media::kVideoFolder));
    tried = 0;
    // Of a folder that cannot be read nobody knows which names are taken.
    if (!videos.Status() && videos.Status().error != platform::IoError::NotFound) {
        return false;
    }
    CString candidate = kFirstName;
    do {
        ++tried;
        const CString file = candidate + media::kEssenceExtension;
        if (!videos.Contains(platform::NameBytesFromText(file.View()))) {
            name = candidate;
            return true;
        }
    } while (AdvanceName(candidate));
    return false;
}

} // namespace nqp2::clips
