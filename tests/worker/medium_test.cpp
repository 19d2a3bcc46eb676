// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Media as the system really has them: full, read-only, limited, with links and pipes on them.

#include "copy/copier.h"
#include "tests/support/small_medium.h"
#include "tests/support/swapping_link.h"
#include "tests/worker/worker_stage.h"
#include "worker/card_requests.h"
#include "worker/recording.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numeric>
#include <sys/resource.h>
#include <sys/stat.h>

namespace nqp2::worker {
namespace {

using test::Operation;
using test::WithMedium;
using testing::HasSubstr;

class MediumTest : public testing::Test {
protected:
    std::string Import(const std::string& to) {
        const ImportRequest request = {m_card.Root(), L"0001AB", InterfaceRoot(to)};
        RecordingWatch watch;
        return ErrorOf([&] { ImportClip(request, copy::kSmallestBlock, watch, m_sizes); });
    }
    std::string Export(const std::string& to) {
        const ExportRequest request = {InterfaceRoot(to), m_card.Root(), {L"0001AB"}};
        RecordingWatch watch;
        return ErrorOf([&] { ExportClips(request, copy::kSmallestBlock, watch, m_sizes); });
    }
    static std::string Icon(const std::string& card) {
        return ErrorOf([&] {
            WriteIcon(InterfaceRoot(card), L"0001AB", std::string(12, 'x'), {2, 2});
        });
    }
    static std::string Delete(const std::string& card) {
        return ErrorOf([&] { DeleteClip(L"0001AB", InterfaceRoot(card)); });
    }
    static std::string Record(const std::string& card, const std::vector<std::string>& units) {
        RecordingParameters parameters;
        parameters.codeType = CT_DV25_50I;
        parameters.cardRoot = InterfaceRoot(card);
        return worker::Record(parameters, units);
    }

    /// A copy of the card's clip below `to`.
    void CopyTo(const std::string& to) {
        std::filesystem::copy(m_card.Folder().Path(), to, std::filesystem::copy_options::recursive);
    }
    void ExpectSourceUntouched() const {
        EXPECT_TRUE(FilesBelow(m_card.Folder().Path()) == m_source) << "the source";
    }

    test::CardBuilder m_card;
    std::map<std::string, std::string> m_source =
        (AddWholeClip(m_card, "0001AB"), FilesBelow(m_card.Folder().Path()));
    test::TempFolder m_to;
    TransferSizes m_sizes;
};

TEST_F(MediumTest, OneThatFillsUpLeavesNothingHalf) {
    const std::vector<std::string> units = EncodePictures(kDv25Pal, 8);
    WithMedium(m_to.Path(), "1m", [&] {
        // Another program takes the room between the question for it and the first byte.
        test::FaultyFileSystem files;
        const platform::ScopedFileSystem use(files);
        files.SetHook([&](Operation operation, const std::string&) {
            if (operation == Operation::Create) {
                m_to.Write("ballast", std::string(800'000, 'b'));
            }
        });
        for (int request = 0; request < 3; ++request) {
            m_to.MakeFolder("CONTENTS/CLIP");
            EXPECT_THAT(request == 0   ? Import(m_to.Path())
                        : request == 1 ? Export(m_to.Path())
                                       : Record(m_to.Path(), units),
                        HasSubstr("No space left"));
            std::filesystem::remove(m_to.Path("ballast"));
            EXPECT_TRUE(FilesBelow(m_to.Path()).empty());
        }
        files.SetHook([](Operation, const std::string&) {});
        EXPECT_EQ(Import(m_to.Path()), "");
        ExpectSourceUntouched();
    });
}

/// Room for fewer and more frames, and for the end of the files in any case.
TEST_F(MediumTest, ARecordingOntoOneThatFillsUpIsKeptUpToItsLastFrame) {
    const std::vector<std::string> units = EncodePictures(kDv25Pal, 30);
    for (const char* const size : {"1900k", "2400k", "2500k", "2600k", "3m", "5m"}) {
        WithMedium(m_to.Path(), size, [&] {
            SCOPED_TRACE(size);
            m_to.MakeFolder("CONTENTS/CLIP");
            RecordingParameters parameters;
            parameters.cardRoot = InterfaceRoot(m_to.Path());
            parameters.wave = {1, 2, 48000, 192000, 4, 16, 0};
            Recording recording(parameters, 0, VS_50I);
            int taken = 0;
            EXPECT_THAT(ErrorOf([&] {
                            for (const std::string& unit : units) {
                                recording.Add(unit, std::string(std::size_t{1920} * 4, 's'));
                                ++taken;
                            }
                        }),
                        HasSubstr("No space left"));
            EXPECT_GT(taken, 0);
            EXPECT_EQ(ErrorOf([&] { recording.Finish(); }), "");
            const auto files = FilesBelow(m_to.Path());
            EXPECT_EQ(files.size(), 4U) << "video, two of sound, metadata";
            const ReadBack video = ReadEssence(m_to.Path("CONTENTS/VIDEO/0001AA.MXF"));
            EXPECT_TRUE(video.packets == taken || video.packets == taken + 1);
            EXPECT_TRUE(video.essence == std::accumulate(units.begin(),
                                                         units.begin() + video.packets,
                                                         std::string()));
            EXPECT_THAT(files.at("CONTENTS/CLIP/0001AA.XML"),
                        HasSubstr("<Duration>" + std::to_string(video.packets) + "<"));
        });
    }
}

/// As on a card whose file system has a largest size of files.
TEST_F(MediumTest, AFileBeyondTheLimitFailsItsRequestAndNotTheWorker) {
    const WorkerStage stage;
    const rlimit limit{100'000, 100'000};
    EXPECT_EQ(prlimit(stage.StartWorker(), RLIMIT_FSIZE, &limit, nullptr), 0);
    OpenParser parser;
    EXPECT_FALSE(stage.Import(parser));
    EXPECT_THAT(parser.LastError(), HasSubstr("File too large"));
    EXPECT_EQ(parser.SetSystemType(VS_50I), 1) << "it lives";
    EXPECT_TRUE(FilesBelow(stage.to.Path()).empty());
}

TEST_F(MediumTest, NothingIsWrittenOrRemovedThroughLinks) {
    for (const std::string link :
         {"", "/VIDEO", "/ICON", "/VIDEO/0001AB.MXF", "/ICON/0001AB.BMP", "/CLIP/0001AB.XML"}) {
        SCOPED_TRACE(link);
        const std::string path = "CONTENTS" + link;
        const test::TempFolder outside;
        const test::TempFolder to;
        CopyTo(outside.Path());
        CopyTo(to.Path());
        std::filesystem::remove_all(to.Path(path));
        std::filesystem::create_symlink(outside.Path(link.ends_with(".MXF") ? "nowhere" : path),
                                        to.Path(path));
        EXPECT_THAT(Import(to.Path()), HasSubstr("link"));
        static_cast<void>(Icon(to.Path()));
        static_cast<void>(Record(to.Path(), {}));
        static_cast<void>(Delete(to.Path()));
        EXPECT_TRUE(FilesBelow(outside.Path()) == m_source) << "what the link leads to";
    }
    ExpectSourceUntouched();
}

/// A few races of each kind; NQP2_RACES=16 runs 960 of them.
TEST_F(MediumTest, NothingOutsideIsTouchedWhileFoldersAreSwappedForLinks) {
    const char* const asked = std::getenv("NQP2_RACES");
    const int races = asked != nullptr ? std::atoi(asked) : 1;
    const std::vector<std::string> units = EncodePictures(kDv25Pal, 2);
    struct Case {
        std::function<std::string(const std::string&)> request;
        bool hasClip = false;
    };
    const Case cases[] = {{[&](const std::string& to) { return Import(to); }},
                          {[&](const std::string& to) { return Export(to); }},
                          {[&](const std::string& to) { return Record(to, units); }},
                          {Delete, true},
                          {Icon, true}};
    const auto folders = [](const test::TempFolder& folder) {
        return std::distance(std::filesystem::recursive_directory_iterator(folder.Path()), {});
    };
    for (int i = 0; i < 2 * races; ++i) {
        for (const char* swapped : {"", "/CLIP", "/VIDEO", "/AUDIO", "/PROXY", "/ICON"}) {
            for (const Case& each : cases) {
                const test::TempFolder outside;
                const test::TempFolder to;
                CopyTo(outside.Path());
                CopyTo(to.Path());
                for (const auto& [name, content] : m_source) {
                    if (!each.hasClip) {
                        std::filesystem::remove(outside.Path(name));
                        std::filesystem::remove(to.Path(name));
                    }
                }
                const auto before = FilesBelow(outside.Path());
                const auto entries = folders(outside);
                {
                    const std::string folder = std::string("CONTENTS") + swapped;
                    const test::SwappingLink link(to.Path(folder), outside.Path(folder));
                    static_cast<void>(each.request(to.Path()));
                }
                EXPECT_TRUE(FilesBelow(outside.Path()) == before) << swapped;
                EXPECT_EQ(folders(outside), entries) << swapped;
            }
        }
    }
    ExpectSourceUntouched();
}

/// Nothing waits for the other end of a pipe that takes the file's place, and no clip arrives
/// without its picture.
TEST_F(MediumTest, APipeInPlaceOfEssenceFails) {
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem use(files);
    files.SetHook([&](Operation operation, const std::string& opened) {
        if (operation == Operation::Open && opened.ends_with("VIDEO/0001AB.MXF")) {
            std::filesystem::remove(opened);
            mkfifo(opened.c_str(), 0600);
        }
    });
    EXPECT_THAT(Import(m_to.Path()), HasSubstr("not a regular file"));
    EXPECT_THAT(Import(m_to.Path()), HasSubstr("is no file"));
    EXPECT_TRUE(FilesBelow(m_to.Path()).empty());
}

} // namespace
} // namespace nqp2::worker
