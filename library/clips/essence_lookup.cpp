// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/essence_lookup.h"

#include "media/card_layout.h"
#include "NQP2ParserU/PathText.h"
#include "platform/case_blind.h"
#include "platform/unicode.h"

#include <utility>

namespace nqp2::clips {

EssenceLookup::EssenceLookup(CString contents, Mode mode)
    : m_contents(std::move(contents)), m_mode(mode) {}

CString EssenceLookup::PathIfExists(const wchar_t* folder, const CString& name) {
    return Exists(folder, name) ? m_contents + folder + name : CString();
}

bool EssenceLookup::Exists(const wchar_t* folder, const CString& name) {
    if (!media::IsPlainName(name)) {
        return false;
    }
    if (m_mode == Mode::OneClip) {
        return platform::PathExists(PosixPath(m_contents + folder + name));
    }
    auto found = m_folders.find(folder);
    if (found == m_folders.end()) {
        found =
            m_folders.emplace(folder, platform::FolderIndex::Read(PosixPath(m_contents + folder)))
                .first;
    }
    return found->second.Contains(platform::NameBytesFromText(name.View()));
}

} // namespace nqp2::clips
