// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/ClipFiles.h"
#include "tests/clips/card_test.h"
#include "tests/support/faulty_file_system.h"

#include <filesystem>
#include <fstream>

namespace nqp2::clips {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Texts = std::vector<std::string>;

constexpr char kRoles[] = "VAMIPvo";
constexpr char kStates[] = {' ', '-', '0', '<'}; ///< there, missing, empty, short

class ClipFilesTest : public CardTest {
protected:
    /// A clip of two channels, whose essence ends behind ten bytes, nine and one.
    void AddTwoChannels(const std::string& name, const char* codec = "DV25_420") {
        const std::string video = "EssenceList/Video/";
        const std::string audio = "EssenceList/+Audio/AudioIndex/";
        const std::string same = "EssenceList/Audio/AudioIndex/";
        m_card.AddClip(name, {{video + "Codec", codec},
                              {video + "VideoIndex/StartByteOffset", "4"},
                              {video + "VideoIndex/DataSize", "6"},
                              {audio + "StartByteOffset", "4"},
                              {same + "DataSize", "5"},
                              {audio + "DataSize", "none"}});
    }
    /// Each file as role, number, path, state and size, that of all clips one after another.
    Texts Read() {
        Texts texts;
        m_isWhole.clear();
        for (const _tag_P2Clip& clip : Scan()) {
            CArray<ClipFile> files;
            EXPECT_TRUE(m_reader.Read(clip, files));
            m_isWhole += IsWhole(files) ? 'y' : 'n';
            for (const ClipFile& file : files) {
                texts.push_back(kRoles[static_cast<int>(file.role)] + std::to_string(file.number) +
                                " " + Below(file.path) + kStates[static_cast<int>(file.state)] +
                                (file.promisedSize == 0 ? "" : std::to_string(file.promisedSize)));
            }
        }
        return texts;
    }
    Texts Loose() {
        Texts texts;
        CArray<LooseFile> files;
        EXPECT_TRUE(m_reader.LooseFiles(files));
        for (const LooseFile& file : files) {
            texts.push_back(Below(file.path) + " " + std::to_string(file.size) +
                            (file.kind == LooseKind::Link ? " link" : ""));
        }
        return texts;
    }

    ClipFileReader m_reader{m_card.Root()};
    std::string m_isWhole; ///< y or n for each clip
};

TEST_F(ClipFilesTest, TellsEveryFileThatTheClipHasAndThatItsMetadataPromise) {
    AddTwoChannels("0001AA");
    for (const auto& [name, size] :
         std::vector<std::pair<std::string, std::size_t>>{{"VIDEO/0001AA.MXF", 10},
                                                          {"AUDIO/0001AA00.MXF", 8},
                                                          {"AUDIO/0001AA07.MXF", 1},
                                                          {"ICON/0001AA.BMP", 0},
                                                          {"PROXY/0001AA.MP4", 3},
                                                          {"PROXY/0001AA.SMI", 3},
                                                          {"VOICE/0001AA00.WAV", 3},
                                                          {"AVCLIP/0001AA.MXF", 3},
                                                          {"VIDEO/0001AA.TMP", 3}}) {
        m_card.AddFile(name, std::string(size, 'x'));
    }
    EXPECT_THAT(Read(), ElementsAre("V0 VIDEO\\0001AA.MXF 10", "o0 VIDEO\\0001AA.TMP ",
                                    "V0 AVCLIP\\0001AA.MXF ", "A0 AUDIO\\0001AA00.MXF<9",
                                    "A1 AUDIO\\0001AA01.MXF-", "A7 AUDIO\\0001AA07.MXF ",
                                    "I0 ICON\\0001AA.BMP0", "P0 PROXY\\0001AA.MP4 ",
                                    "P0 PROXY\\0001AA.SMI ", "v0 VOICE\\0001AA00.WAV ",
                                    "M0 CLIP\\0001AA.XML "));
    EXPECT_EQ(m_isWhole, "n");
    EXPECT_THAT(Loose(), IsEmpty());
}

TEST_F(ClipFilesTest, FindsTheFilesOfOneFileFamiliesInAnyLetterCaseAndBehindLinks) {
    AddTwoChannels("0001AA", "AVC-Intra_422");
    m_card.AddFile("avclip/0001aa.mxf", "0123456789");
    const std::string real = m_card.Folder().Write("elsewhere.bmp", "icon");
    std::filesystem::create_directories(m_card.Folder().Path("CONTENTS/Icon"));
    std::filesystem::create_symlink(real, m_card.Folder().Path("CONTENTS/Icon/0001Aa.bmp"));
    EXPECT_THAT(Read(), ElementsAre("V0 AVCLIP\\0001aa.mxf 10", "I0 ICON\\0001Aa.bmp ",
                                    "M0 CLIP\\0001AA.XML "));
    EXPECT_EQ(m_isWhole, "y");
}

TEST_F(ClipFilesTest, WhatIsDescribedAndMissingIsTold) {
    for (const auto& [name, format] :
         std::vector<std::pair<std::string, const char*>>{{"0001AA", "MP4"}, {"0002AA", "MOV"}}) {
        m_card.AddClip(name, {{"EssenceList/Video/Codec", "DV25_420"},
                              {"ClipMetadata/Thumbnail/ThumbnailFormat", "BMP"},
                              {"ClipMetadata/Proxy/ProxyFormat", format}});
        m_card.AddFile("VIDEO/" + name + ".MXF", "x");
    }
    m_card.AddFile("PROXY/0001AA.SMI", "x");
    m_card.AddFile("PROXY/0002aa.mov", "x");
    EXPECT_THAT(Read(), UnorderedElementsAre("V0 VIDEO\\0001AA.MXF ", "I0 ICON\\0001AA.BMP-",
                                             "P0 PROXY\\0001AA.SMI ", "P0 PROXY\\0001AA.MP4-",
                                             "M0 CLIP\\0001AA.XML ", "V0 VIDEO\\0002AA.MXF ",
                                             "I0 ICON\\0002AA.BMP-", "P0 PROXY\\0002aa.mov ",
                                             "M0 CLIP\\0002AA.XML "));
    EXPECT_EQ(m_isWhole, "yy");
}

TEST_F(ClipFilesTest, RecordingsOfMemosThatAreMissingAreTold) {
    const std::string memo = "ClipMetadata/MemoList/Memo/";
    const std::string next = "ClipMetadata/MemoList/+Memo/";
    const test::ClipValues fields = {
        {"EssenceList/Video/Codec", "DV25_420"}, {next + "VoiceFormat", "WAV"},
        {next + "Text", "no recording"},         {next + "VoiceBitsPerSample", "16"},
        {next + "VoiceFormat", "../aif"},        {next + "VoiceFormat", "AIF"}};
    m_card.AddClip("0001AA", fields);
    m_card.AddFile("CLIP/0002AA.XML", test::ClipXml(fields) + "<?read as-a-tree?>");
    for (const char* const name : {"VIDEO/0001AA.MXF", "VIDEO/0002AA.MXF", "VOICE/0001AA00.wav",
                                   "VOICE/0002AA03.AIF", "VOICE/0002AA07.WAV"}) {
        m_card.AddFile(name, "x");
    }
    EXPECT_THAT(Read(), UnorderedElementsAre("V0 VIDEO\\0001AA.MXF ", "v0 VOICE\\0001AA00.wav ",
                                             "v1 VOICE\\0001AA01.WAV-", "v2 VOICE\\0001AA02.WAV-",
                                             "v3 VOICE\\0001AA03.AIF-", "M0 CLIP\\0001AA.XML ",
                                             "V0 VIDEO\\0002AA.MXF ", "v0 VOICE\\0002AA00.WAV-",
                                             "v1 VOICE\\0002AA01.WAV-", "v2 VOICE\\0002AA02.WAV-",
                                             "v3 VOICE\\0002AA03.AIF ", "v7 VOICE\\0002AA07.WAV ",
                                             "M0 CLIP\\0002AA.XML "));
    EXPECT_EQ(m_isWhole, "yy");
}

TEST_F(ClipFilesTest, ARecordingIsTheFileThatItsMemoNames) {
    const std::string memo = "ClipMetadata/MemoList/+Memo/";
    m_card.AddClip("0001AA", {{"EssenceList/Video/Codec", "DV25_420"},
                              {memo + "VoiceFormat", "WAV"},
                              {"ClipMetadata/MemoList/Memo/VoiceFile", "MEMO7.WAV"},
                              {memo + "VoiceFormat", "WAV"}});
    for (const char* const name : {"VIDEO/0001AA.MXF", "VOICE/MEMO7.WAV", "VOICE/MEMO8.WAV"}) {
        m_card.AddFile(name, "x");
    }
    EXPECT_THAT(Read(), UnorderedElementsAre("V0 VIDEO\\0001AA.MXF ", "v0 VOICE\\MEMO7.WAV ",
                                             "v1 VOICE\\0001AA01.WAV-", "M0 CLIP\\0001AA.XML "));
    EXPECT_THAT(Loose(), ElementsAre("VOICE\\MEMO8.WAV 1"));
}

TEST_F(ClipFilesTest, WhatIsNoFileIsMissingAndWhatIsNoClipsIsLoose) {
    AddTwoChannels("0001AA");
    m_card.Folder().MakeFolder("CONTENTS/VIDEO/0001AA.MXF");
    m_card.AddFile("AUDIO/0001AA00.MXF");
    m_card.AddFile("AUDIO/0001AA0.MXF", "x");
    m_card.AddFile("AUDIO/0001AA01.MXF", "x");
    m_card.AddFile("CLIP/0002AA.XML", "no XML");
    m_card.AddFile("VIDEO/0002AA.MXF", "x");
    m_card.Folder().Write("deeper/than/most/LASTCLIP.TXT", "xyz");
    std::filesystem::create_directory_symlink("/", m_card.Folder().Path("way out"));
    EXPECT_THAT(Read(), ElementsAre("V0 VIDEO\\0001AA.MXF-10", "A0 AUDIO\\0001AA00.MXF09",
                                    "A1 AUDIO\\0001AA01.MXF ", "M0 CLIP\\0001AA.XML "));
    const std::string root = platform::Utf8FromText(m_card.Root().View());
    EXPECT_THAT(Loose(),
                ElementsAre("AUDIO\\0001AA0.MXF 1", "CLIP\\0002AA.XML 6", "VIDEO\\0002AA.MXF 1",
                            root + "\\deeper\\than\\most\\LASTCLIP.TXT 3",
                            root + "\\way out 0 link"));
}

// However many clips there are, each costs one question for each file, and its metadata read, if a
// scan has not told of them.
TEST_F(ClipFilesTest, AsksTheMediumOnceForEachFolderAndFile) {
    using Calls = std::pair<std::uint64_t, std::uint64_t>; // listings, and all
    const auto callsFor = [&](int from, int to, bool isTold = false) {
        for (int i = from; i < to; ++i) {
            const std::string name = "00" + std::to_string(i) + "AA";
            AddTwoChannels(name);
            m_card.AddFile("VIDEO/" + name + ".MXF", "0123456789");
        }
        ClipFileReader reader(m_card.Root());
        m_told = isTold ? &reader : nullptr;
        const CArray<_tag_P2Clip> clips = Scan();
        test::FaultyFileSystem files;
        const platform::ScopedFileSystem use(files);
        CArray<ClipFile> found;
        for (const _tag_P2Clip& clip : clips) {
            EXPECT_TRUE(reader.Read(clip, found));
        }
        return Calls(files.Calls(test::Operation::List), files.Calls());
    };
    const Calls ofOne = callsFor(10, 11);
    EXPECT_EQ(callsFor(11, 21), Calls(ofOne.first, ofOne.second + 10U * 3));
    const auto [listings, all] = callsFor(10, 21);
    const auto [listingsOfTold, allOfTold] = callsFor(10, 21, true);
    EXPECT_EQ(listings - listingsOfTold, 4U) << "metadata, icons, proxies, common essence";
    EXPECT_LE(allOfTold + 11 + 4, all) << "the metadata are not read again";
}

// What a scan has learnt is told as what is read of the files, also of those that it reads as trees
// and of names that differ in case alone; a second scan forgets the first.
TEST_F(ClipFilesTest, AScanTellsWhatTheMetadataPromise) {
    AddTwoChannels("0001AA");
    AddTwoChannels("0002AA", "AVC-Intra_422");
    AddTwoChannels("0003AA");
    const std::string path = m_card.Folder().Path("CONTENTS/CLIP/");
    std::filesystem::copy_file(path + "0002AA.XML", path + "0001aa.xml");
    std::ofstream(path + "0003AA.XML", std::ios::app) << std::string(60'000, ' ');
    const Texts read = Read();
    m_told = &m_reader;
    EXPECT_EQ(Read(), read);
    AddTwoChannels("0001AA", "AVC-Intra_422");
    EXPECT_NE(Read(), read);
    const test::CardBuilder other;
    ClipFileReader ofOther(other.Root());
    m_told = &ofOther;
    const CArray<_tag_P2Clip> clips = Scan();
    CArray<ClipFile> files;
    EXPECT_TRUE(ofOther.Read(clips[0], files));
    EXPECT_TRUE(files.IsEmpty() || files[0].state == ClipFileState::Missing)
        << "the card that was scanned is another one";
}

// Copies may change the letters of some names. What a record only takes for granted was not looked
// for: nothing is said of those folders.
TEST_F(ClipFilesTest, AScanTellsInWhichFoldersNamesAreAsRecorded) {
    const auto exact = [this] {
        Scan();
        Texts folders;
        for (const CString& folder : m_report.exactFolders) {
            folders.push_back(Below(folder));
        }
        return folders;
    };
    AddTwoChannels("0001AA");
    AddTwoChannels("0002AA");
    for (const char* const name : {"VIDEO/0001aa.mxf", "ICON/0001AA.BMP", "PROXY/0001AA.MP4"}) {
        m_card.AddFile(name, "");
    }
    EXPECT_EQ(exact(), Texts({"ICON\\", "PROXY\\", "CLIP\\"}));
    m_card.AddFile("ICON/0002AA.bmp", "");
    EXPECT_EQ(exact(), Texts({"PROXY\\", "CLIP\\"}));
    const std::string clips = m_card.Folder().Path("CONTENTS/CLIP/");
    std::filesystem::rename(clips + "0002AA.XML", clips + "0002AA.xml");
    EXPECT_EQ(exact(), Texts({"PROXY\\"}));
}

} // namespace
} // namespace nqp2::clips
