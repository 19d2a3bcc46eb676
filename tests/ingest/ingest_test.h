// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/IngestList.h"
#include "platform/file_system.h"
#include "tests/clips/card_test.h"

#include <filesystem>
#include <set>
#include <string>

namespace nqp2::ingest {

namespace fs = std::filesystem;

class IngestTest : public clips::CardTest {
protected:
    /// Adds to the card's list; 0 or 1.
    __int64 Add(const IngestClips& clips) {
        IngestRequest request = {{m_card.Root(), clips}};
        return m_parser.WriteIngestXML(L"Ingest.xml", request);
    }
    int Delete(const CString& clipName) {
        return parser::NQP2ParserPeer::DeleteIngestNode(m_parser, m_card.Root(), clipName);
    }
    void SetFile(std::string_view bytes) const {
        m_card.Folder().Write("USERDATA/Ingest.xml", bytes);
    }
    std::string File(const std::string& name = "Ingest.xml") const {
        std::string bytes;
        const std::string path = m_card.Folder().Path("USERDATA/" + name);
        return platform::Files().Read(path, 1U << 30U, bytes) ? bytes : "(unreadable)";
    }
    /// Names in the list's folder, hidden ones too.
    std::set<std::string> FilesInFolder() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_card.Folder().Path("USERDATA"))) {
            names.insert(entry.path().filename().string());
        }
        return names;
    }
    /// "NAME in-out in-out" of every clip; "(unreadable)" for a list that cannot be read.
    std::vector<std::string> Listed() const {
        IngestList list;
        if (!LoadIngestList(m_card.Root(), list)) {
            return {"(unreadable)"};
        }
        std::vector<std::string> rows;
        for (const auto& [name, segments] : list) {
            rows.push_back(platform::Utf8FromText(name.View()));
            for (const tag_P2SegInfo& each : segments) {
                rows.back() +=
                    " " + std::to_string(each.InPoint) + "-" + std::to_string(each.OutPoint);
            }
        }
        return rows;
    }
};

} // namespace nqp2::ingest
