// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/free_name.h"

#include "media/card_layout.h"

namespace nqp2::clips {
namespace {

constexpr const wchar_t* kFirstName = L"0001AA";

struct Wheel {
    int position;
    wchar_t limit;
};

// Turned in this order: the sixth character first.
constexpr Wheel kWheels[] = {{5, L'Z'}, {4, L'Z'}, {3, L'9'}, {2, L'9'}};

/// Moves a six-character name to the next candidate; false after the last. A position that
/// reaches its limit is never set back (after 0001AZ comes 0001BZ): kept, hosts rely on it.
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

} // namespace

bool FindFreeName(const platform::Place& contents, CString& name, std::int64_t& tried) {
    const platform::Place videos = contents.Below(media::kVideoFiles.folder.Path());
    const platform::IoStatus& status = videos.Names().Status();
    tried = 0;
    // A folder that cannot be read does not tell which names are taken.
    if (!status && status.error != platform::IoError::NotFound) {
        return false;
    }
    CString candidate = kFirstName;
    do {
        ++tried;
        if (!videos.Has(media::FileNameOf(media::kVideoFiles, candidate))) {
            name = candidate;
            return true;
        }
    } while (AdvanceName(candidate));
    return false;
}

} // namespace nqp2::clips
