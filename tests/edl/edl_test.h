// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/file_system.h"
#include "tests/clips/card_test.h"

#include <filesystem>
#include <set>
#include <string>

namespace nqp2::edl {

inline constexpr const char* kEditSchema = "urn:schemas-Professional-Plug-in:P2:EditMetadata:v2.0";
inline constexpr const wchar_t* kClipID =
    L"060A2B340101010501010D4313000000798AE7C6A09E4B6FA5A11F6E2D08E5C0";

/// An edit list file; paths as test::ClipValue has them, from the edit content.
inline std::string EdlXml(const test::ClipValues& values, const std::string& schema = kEditSchema) {
    test::ClipElement content("EditContent");
    for (const test::ClipValue& each : values) {
        content.Set(each.path, each.value);
    }
    return "<P2Main xmlns=\"" + schema + "\">" + content.Xml() + "</P2Main>";
}

class EdlTest : public clips::CardTest {
protected:
    std::string AddFile(const std::string& name, const std::string& bytes) const {
        return m_card.Folder().Write("EDITLIST/" + name, bytes);
    }
    std::string AddEdl(const std::string& name, const test::ClipValues& values = {}) const {
        return AddFile(name, EdlXml(values));
    }
    /// A clip that events may refer to by kClipID.
    void AddClip(const std::string& name, const test::ClipValues& values = {}) const {
        test::ClipValues all = {{"GlobalClipID", platform::Utf8FromText(kClipID)},
                                {"EditUnit", "1/25"},
                                {"EssenceList/Video/FrameRate", "50i"},
                                {"EssenceList/Video/Codec", "DV25_411"}};
        all.insert(all.end(), values.begin(), values.end());
        m_card.AddClip(name, all);
    }
    CArray<tag_P2EDL> Load() {
        CArray<tag_P2EDL> edls;
        EXPECT_EQ(m_parser.LoadEdl(m_card.Root(), edls), 0);
        return edls;
    }
    tag_P2EDL LoadOnly() {
        const CArray<tag_P2EDL> edls = Load();
        EXPECT_EQ(edls.GetSize(), 1);
        return edls.IsEmpty() ? tag_P2EDL() : edls[0];
    }
    /// Names in the edit lists' folder, hidden ones too.
    std::set<std::string> FilesInFolder() const {
        std::set<std::string> names;
        const std::string folder = m_card.Folder().Path("EDITLIST");
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            names.insert(entry.path().filename().string());
        }
        return names;
    }
    std::string Bytes(const std::string& name) const {
        std::string bytes;
        const auto status =
            platform::Files().Read(m_card.Folder().Path("EDITLIST/" + name), 1U << 30U, bytes);
        return status ? bytes : "(unreadable)";
    }

    /// The file that an unnamed list went to among the card's own, or "".
    std::string SaveOnCard(const tag_P2EDL& edl) {
        CString saved;
        const bool done = m_parser.SaveCardEdl(m_card.Root(), edl, L"", saved) == 0;
        const CString below = saved.Mid(m_card.Root().GetLength() + 1);
        return done ? platform::Utf8FromText(below.View()) : "";
    }

    static tag_P2EDLClipTrackEvent Event(const CString& clipName, const CString& id) {
        tag_P2EDLClipTrackEvent event;
        event.ClipName = clipName;
        event.GlobalClipID = id;
        event.GlobalClipGuid = CNQP2Parser::GuidFromUMID(id);
        event.Duration = 10;
        return event;
    }
    /// An edit list of one event of the clip 0001AA.
    static tag_P2EDL OneEvent() {
        tag_P2EDL edl;
        edl.Events.Add(Event(L"0001AA", kClipID));
        return edl;
    }
};

} // namespace nqp2::edl
