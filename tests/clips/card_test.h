// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/NQP2Parser.h"
#include "platform/unicode.h"
#include "tests/support/card_builder.h"
#include "tests/support/print_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

/// Where a clip says when it was shot.
inline constexpr const char* kStart = "ClipMetadata/Shoot/StartDate";

namespace nqp2::parser {

/// What the tests see of the parser's private side.
struct NQP2ParserPeer {
    static int LoadClipFromXml(CNQP2Parser& parser, const CString& path, _tag_P2Clip& clip) {
        return parser.LoadClipFromXml(path, clip);
    }
    static __int64 GetNewEdlName(CNQP2Parser& parser, const CString& root, const CString& id,
                                 CString& name) {
        return parser.GetNewEdlName(root, id, name);
    }
    static int CheckEdlSerialNumber(CNQP2Parser& parser, int number, const CString& pattern) {
        return parser.CheckEdlSerialNumber(number, pattern);
    }
    static int DeleteIngestNode(CNQP2Parser& parser, const CString& root, const CString& clipName) {
        return parser.DeleteIngestNode(root, clipName);
    }
    static bool HasCardManager(const CNQP2Parser& parser) {
        return parser.m_hP2Cmgr != nullptr && parser.m_pfnDDP2CLogSense != nullptr;
    }
};

} // namespace nqp2::parser

namespace nqp2::clips {

using parser::NQP2ParserPeer;

/// Asks for the format of a card that tells none: the result, and outputs that stay as they were.
inline void ExpectNoFormat(CNQP2Parser& parser, const CString& root, __int64 result) {
    eCodeType type = CT_AVCI200_720_50P;
    eP2_VIDEO_STANDARD standard = VS_2398P;
    DiskFormat format;
    format.codec = L"mine";
    EXPECT_EQ(parser.GetDiskFormat(root, type, standard), result);
    EXPECT_EQ(parser.GetDiskFormat(root, format), result);
    EXPECT_EQ(type, CT_AVCI200_720_50P);
    EXPECT_EQ(standard, VS_2398P);
    EXPECT_EQ(format.codec, L"mine");
    EXPECT_FALSE(format.found);
}

/// A card and an initialised parser.
class CardTest : public testing::Test {
protected:
    CardTest() { m_parser.Init(); }
    ~CardTest() override { m_parser.Release(); }

    CArray<_tag_P2Clip> Scan(int keepDigit = 1) {
        CArray<_tag_P2Clip> clips;
        m_report = {};
        m_report.files = m_told;
        EXPECT_EQ(m_parser.LoadClipEx(m_card.Root(), clips, keepDigit, m_report), 0);
        return clips;
    }
    static std::vector<std::string> NamesOf(const CArray<_tag_P2Clip>& clips) {
        std::vector<std::string> names;
        for (const _tag_P2Clip& clip : clips) {
            names.push_back(platform::Utf8FromText(clip.ClipName.View()));
        }
        return names;
    }
    std::vector<std::string> ScannedNames() { return NamesOf(Scan()); }

    /// "NAME reason" of each row, paths below the contents folder.
    std::vector<std::string> Remarks() const {
        std::vector<std::string> rows;
        for (const SkippedFile& file : m_report.skipped) {
            rows.push_back(Below(file.path) + " " + std::to_string(static_cast<int>(file.reason)));
        }
        return rows;
    }
    /// A row as Remarks gives it.
    static std::string Remark(const std::string& path, SkipReason reason) {
        return path + " " + std::to_string(static_cast<int>(reason));
    }
    /// A record's path without the contents folder in front, or whole when it stands elsewhere.
    std::string Below(const CString& path) const {
        const CString contents = m_card.Contents();
        const bool isBelow = path.Left(contents.GetLength()) == contents;
        return platform::Utf8FromText(isBelow ? path.View().substr(contents.View().size())
                                              : path.View());
    }

    test::CardBuilder m_card;
    CNQP2Parser m_parser;
    ScanReport m_report;
    ClipFileReader* m_told = nullptr; ///< of the files, by the scans
};

} // namespace nqp2::clips
