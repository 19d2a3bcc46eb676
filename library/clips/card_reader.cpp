// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/card_reader.h"

namespace nqp2::clips {

platform::Place CardReader::Contents(const CString& folder) {
    if (m_contents != folder) {
        m_folders.Clear();
        m_contents = folder;
    }
    m_folders.BeginOperation();
    return platform::Place(folder, &m_folders);
}

bool CardReader::LoadClip(const CString& path) {
    return x_LoadFile(platform::PathOnDisk(path, &m_folders)) != 0;
}

} // namespace nqp2::clips
