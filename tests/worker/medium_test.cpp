// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Media as the system really has them: full, read-only, limited, with links and pipes on them.

#include "copy/copier.h"
#include "NQP2ParserU/Channel.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/R8P2SysInterface.h"
#include "NQP2ParserU/R8P2TransInfo.h"
#include "platform/unicode.h"
#include "tests/channel/channel_test.h"
#include "tests/support/child_process.h"
#include "tests/worker/essence_maker.h"
#include "tests/worker/transfer_fixture.h"
#include "worker/clip_delete.h"
#include "worker/clip_export.h"
#include "worker/clip_import.h"
#include "worker/icon_bitmap.h"
#include "worker/recording.h"
#include "worker/volume_serial.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <thread>
#include <unistd.h>

namespace nqp2::worker {
namespace {

using test::Operation;
using testing::HasSubstr;

constexpr int kPassed = 7;
constexpr int kCannotMount = 77;

class MediumTest : public testing::Test {
protected:
    MediumTest() { AddWholeClip(m_card, "0001AB"); }

    Outcome Import(const std::string& to) {
        m_watch = {};
        return ImportClip({m_card.Root(), L"0001AB", InterfaceRoot(to)}, copy::kSmallestBlock,
                          m_watch, m_sizes);
    }
    Outcome Export(const std::string& to) {
        m_watch = {};
        return ExportClips({InterfaceRoot(to), m_card.Root(), {L"0001AB"}}, copy::kSmallestBlock,
                           m_watch, m_sizes);
    }
    static Outcome Icon(const std::string& card, const CString& name = L"0001AB") {
        return WriteIcon(InterfaceRoot(card), name, std::string(12, 'x'), {2, 2});
    }
    static Outcome Record(const std::string& card, const std::vector<std::string>& units) {
        RecordingParameters parameters;
        parameters.codeType = CT_DV25_50I;
        parameters.cardRoot = InterfaceRoot(card);
        std::unique_ptr<Recording> recording;
        Outcome outcome = Recording::Start(parameters, 0, VS_50I, recording);
        for (std::size_t i = 0; outcome && i < units.size(); ++i) {
            outcome = recording->Add(units[i], "");
        }
        return outcome ? recording->Finish() : outcome;
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
    RecordingWatch m_watch;
    TransferSizes m_sizes;
};

/// Runs a test's body in a process that sees a file system of its own, of that size, under `path`.
int WithMedium(const std::string& path, const char* size, const std::function<void()>& body) {
    return test::RunInChild([&] {
        const std::string options = std::string("size=") + size;
        if (unshare(CLONE_NEWNS) != 0 ||
            mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("medium", path.c_str(), "tmpfs", 0, options.c_str()) != 0) {
            return kCannotMount;
        }
        body();
        return testing::Test::HasFailure() ? 1 : kPassed;
    });
}

void MakeReadOnly(const std::string& path) {
    EXPECT_EQ(mount(nullptr, path.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
}

TEST_F(MediumTest, OneThatFillsUpLeavesNothingHalf) {
    const std::vector<std::string> units = EncodePictures(kDv25Pal, 8);
    const int result = WithMedium(m_to.Path(), "1m", [&] {
        // Somebody else takes the room between the question for it and the first byte.
        test::FaultyFileSystem files;
        const platform::ScopedFileSystem use(files);
        files.SetHook([&](Operation operation, const std::string&) {
            if (operation == Operation::Create) {
                m_to.Write("ballast", std::string(800'000, 'b'));
            }
        });
        using Request = std::function<Outcome()>;
        const Request requests[] = {[&] { return Import(m_to.Path()); },
                                    [&] { return Export(m_to.Path()); },
                                    [&] { return Record(m_to.Path(), units); }};
        for (const Request& request : requests) {
            m_to.MakeFolder("CONTENTS/CLIP");
            EXPECT_THAT(request().error, HasSubstr("No space left"));
            std::filesystem::remove(m_to.Path("ballast"));
            EXPECT_TRUE(FilesBelow(m_to.Path()).empty());
        }
        files.SetHook([](Operation, const std::string&) {});
        EXPECT_TRUE(Import(m_to.Path()));
        ExpectSourceUntouched();
    });
    if (result == kCannotMount) {
        GTEST_SKIP() << "a file system cannot be mounted here";
    }
    EXPECT_EQ(result, kPassed);
}

TEST_F(MediumTest, ARecordingOntoOneThatFillsUpIsKeptUpToItsLastFrame) {
    const int result = WithMedium(m_to.Path(), "5m", [&] {
        const std::vector<std::string> units = EncodePictures(kDv25Pal, 40);
        m_to.MakeFolder("CONTENTS/CLIP");
        RecordingParameters parameters;
        parameters.cardRoot = InterfaceRoot(m_to.Path());
        parameters.wave = {1, 2, 48000, 192000, 4, 16, 0};
        std::unique_ptr<Recording> recording;
        ASSERT_TRUE(Recording::Start(parameters, 0, VS_50I, recording));
        std::size_t taken = 0;
        Outcome outcome;
        while (outcome && taken < units.size()) {
            outcome = recording->Add(units[taken], std::string(std::size_t{1920} * 4, 's'));
            taken += outcome ? 1U : 0U;
        }
        EXPECT_THAT(outcome.error, HasSubstr("No space left"));
        EXPECT_GT(taken, 15U);
        const Outcome finished = recording->Finish();
        EXPECT_TRUE(finished) << finished.error;
        const auto files = FilesBelow(m_to.Path());
        EXPECT_EQ(files.size(), 4U) << "video, two of sound, metadata";
        const std::string& metadata = files.at("CONTENTS/CLIP/0001AA.XML");
        EXPECT_TRUE(metadata.find("<Duration>" + std::to_string(taken) + "<") != metadata.npos ||
                    metadata.find("<Duration>" + std::to_string(taken + 1) + "<") != metadata.npos);
        int packets = 0;
        std::int64_t position = 0;
        const std::string essence =
            ReadEssence(m_to.Path("CONTENTS/VIDEO/0001AA.MXF"), packets, position);
        EXPECT_EQ(essence.size(), static_cast<std::size_t>(packets) * 144000);
        EXPECT_GE(packets, static_cast<int>(taken));
    });
    if (result == kCannotMount) {
        GTEST_SKIP() << "a file system cannot be mounted here";
    }
    EXPECT_EQ(result, kPassed);
}

/// What is swapped for a link while a recording runs leads nowhere. Set NQP2_RACES for a longer run.
TEST_F(MediumTest, AFolderSwappedForALinkDuringARecordingLeadsNowhere) {
    const char* const asked = std::getenv("NQP2_RACES");
    const int races = asked != nullptr ? std::atoi(asked) : 12;
    const std::vector<std::string> units = EncodePictures(kDv25Pal, 2);
    const test::TempFolder away;
    for (const char* const folder : {"CLIP", "VIDEO", "AUDIO"}) {
        away.MakeFolder(folder);
    }
    int done = 0;
    for (int i = 0; i < races; ++i) {
        const test::TempFolder card;
        const char* const swapped[] = {"", "/VIDEO", "/AUDIO", "/CLIP"};
        const std::string path = std::string("CONTENTS") + swapped[i % 4];
        card.MakeFolder("CONTENTS/CLIP");
        card.MakeFolder("CONTENTS/VIDEO");
        card.MakeFolder("CONTENTS/AUDIO");
        std::filesystem::create_symlink(away.Path() + swapped[i % 4], card.Path("link"));
        std::atomic<bool> isOver{false};
        std::thread swapper([&] {
            while (!isOver) {
                renameat2(AT_FDCWD, card.Path(path).c_str(), AT_FDCWD, card.Path("link").c_str(),
                          RENAME_EXCHANGE);
            }
        });
        done += Record(card.Path(), units) ? 1 : 0;
        isOver = true;
        swapper.join();
    }
    EXPECT_TRUE(FilesBelow(away.Path()).empty()) << done << " of " << races << " were recorded";
    std::size_t folders = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(away.Path())) {
        folders += entry.is_directory() ? 1U : 0U;
    }
    EXPECT_EQ(folders, 3U) << "none is made there";
}

/// An ordinary user may not read the device. What the system's database has serves; what an earlier
/// look at some device of that name has left behind does not.
TEST_F(MediumTest, TheSerialNumberIsThisVolumesOrNone) {
    struct stat facts = {};
    ASSERT_EQ(stat(m_to.Path().c_str(), &facts), 0);
    const std::string device =
        std::to_string(major(facts.st_dev)) + ":" + std::to_string(minor(facts.st_dev));
    if (!std::filesystem::exists("/sys/dev/block/" + device)) {
        GTEST_SKIP() << "the temporary folder is on no device";
    }
    chmod(m_to.Path().c_str(), 0755);
    const std::string node =
        "/dev/" + std::filesystem::read_symlink("/sys/dev/block/" + device).filename().native();
    const int result = WithMedium("/run", "1m", [&] {
        constexpr uid_t kNobody = 65534;
        std::filesystem::create_directories("/run/blkid");
        std::ofstream("/run/blkid/blkid.tab")
            << "<device DEVNO=\"0x" << std::hex << facts.st_dev << "\" TIME=\"1700000000.0\" "
            << "UUID=\"DEAD-BEEF\" TYPE=\"vfat\">" << node << "</device>\n";
        ASSERT_EQ(seteuid(kNobody), 0);
        CString serial;
        EXPECT_THAT(FindVolumeSerial(InterfaceRoot(m_to.Path()), serial).error,
                    HasSubstr("has none"));
        EXPECT_TRUE(serial.IsEmpty());
        ASSERT_EQ(seteuid(0), 0);
        std::filesystem::create_directories("/run/udev/data");
        std::ofstream("/run/udev/data/b" + device) << "I:1\nE:ID_FS_UUID=1A2B-3C4D\n";
        ASSERT_EQ(seteuid(kNobody), 0);
        EXPECT_TRUE(FindVolumeSerial(InterfaceRoot(m_to.Path()), serial));
        EXPECT_EQ(serial, L"1A2B-3C4D");
    });
    if (result == kCannotMount) {
        GTEST_SKIP() << "a file system cannot be mounted here";
    }
    EXPECT_EQ(result, kPassed);
}

TEST_F(MediumTest, OneThatIsReadOnlyIsReadAndNeverWritten) {
    const int result = WithMedium(m_to.Path(), "4m", [&] {
        CopyTo(m_to.Path());
        std::filesystem::remove(m_to.Path("CONTENTS/ICON/0001AB.BMP"));
        const auto without = FilesBelow(m_to.Path());
        MakeReadOnly(m_to.Path());
        for (const Outcome& outcome : {Import(m_to.Path()), Export(m_to.Path()), Icon(m_to.Path()),
                                       DeleteClip(L"0001AB", InterfaceRoot(m_to.Path())),
                                       Record(m_to.Path(), EncodePictures(kDv25Pal, 1))}) {
            EXPECT_THAT(outcome.error, HasSubstr("Read-only"));
        }
        EXPECT_TRUE(FilesBelow(m_to.Path()) == without);
        const CString to = InterfaceRoot(m_to.Path());
        m_watch = {};
        EXPECT_TRUE(ImportClip({to, L"0001AB", to}, copy::kSmallestBlock, m_watch, m_sizes))
            << "all is there";
        const test::TempFolder away;
        m_watch = {};
        EXPECT_TRUE(ImportClip({to, L"0001AB", InterfaceRoot(away.Path())}, copy::kSmallestBlock,
                               m_watch, m_sizes));
        EXPECT_TRUE(FilesBelow(away.Path()) == without);
    });
    if (result == kCannotMount) {
        GTEST_SKIP() << "a file system cannot be mounted here";
    }
    EXPECT_EQ(result, kPassed);
}

/// As on a card whose file system has a largest size of files.
TEST_F(MediumTest, AFileBeyondTheLimitFailsItsRequestAndNotTheWorker) {
    const test::SocketFolder socket;
    ASSERT_TRUE(UseWorker({.program = NQP2_WORKER_PROGRAM, .socket = socket.Socket()}));
    const rlimit limit{100'000, 100'000};
    EXPECT_EQ(prlimit(test::ChildNamed("nqp2-worker"), RLIMIT_FSIZE, &limit, nullptr), 0);
    R8P2Parser_SetSysInterface(HostInterface().systemObject, HostInterface().table);
    CNQP2Parser parser;
    parser.Init();
    stu_R8P2TransInfo info;
    info.text1 = m_card.Root();
    info.text2 = L"0001AB";
    info.text3 = InterfaceRoot(m_to.Path());
    EXPECT_EQ(parser.ImportFile(info), 1);
    EXPECT_THAT(platform::Utf8FromText(parser.GetLastError().View()), HasSubstr("File too large"));
    EXPECT_EQ(parser.SetSystemType(VS_50I), 1) << "it lives";
    parser.Release();
    R8XDCAMParser_ResetSysInterface();
    R8P2Parser_SetSysInterface(nullptr, nullptr);
    LeaveWorker();
    EXPECT_TRUE(FilesBelow(m_to.Path()).empty());
    ExpectSourceUntouched();
}

TEST_F(MediumTest, NothingIsWrittenOrRemovedThroughLinks) {
    struct Case {
        const char* link;
        const char* behind; ///< where it leads, in a folder outside
        const char* content = nullptr;
    };
    const Case cases[] = {
        {"CONTENTS", "CONTENTS"},
        {"CONTENTS/VIDEO", "CONTENTS/VIDEO"},
        {"CONTENTS/ICON", "CONTENTS/ICON"},
        {"CONTENTS/VIDEO/0001AB.MXF", "nowhere"},
        {"CONTENTS/ICON/0001AB.BMP", "CONTENTS/ICON/0001AB.BMP"},
        {"CONTENTS/CLIP/0001AB.XML", "CONTENTS/CLIP/0001AB.XML"},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.link);
        const test::TempFolder outside;
        const test::TempFolder to;
        CopyTo(outside.Path());
        CopyTo(to.Path());
        std::filesystem::remove_all(to.Path(each.link));
        std::filesystem::create_symlink(outside.Path(each.behind), to.Path(each.link));
        EXPECT_THAT(Import(to.Path()).error, HasSubstr("link"));
        static_cast<void>(Icon(to.Path()));
        static_cast<void>(Record(to.Path(), {}));
        static_cast<void>(DeleteClip(L"0001AB", InterfaceRoot(to.Path())));
        EXPECT_TRUE(FilesBelow(outside.Path()) == m_source) << "what the link leads to";
    }
    ExpectSourceUntouched();
}

/// Puts a link in a folder's place and the folder back again, over and over.
class Swapper {
public:
    Swapper(std::string folder, const std::string& outside)
        : m_folder(std::move(folder)), m_link(m_folder + "-link") {
        std::filesystem::create_symlink(outside, m_link);
        m_thread = std::thread([this] {
            while (!m_ends) {
                Swap();
            }
        });
    }
    Swapper(const Swapper&) = delete;
    Swapper& operator=(const Swapper&) = delete;
    ~Swapper() {
        m_ends = true;
        m_thread.join();
        if (std::filesystem::is_symlink(m_folder)) {
            Swap();
        }
        std::filesystem::remove(m_link);
    }

private:
    void Swap() const {
        renameat2(AT_FDCWD, m_folder.c_str(), AT_FDCWD, m_link.c_str(), RENAME_EXCHANGE);
    }

    std::string m_folder;
    std::string m_link;
    std::atomic<bool> m_ends = false;
    std::thread m_thread;
};

/// A few races of each kind; NQP2_RACES=16 runs 768 of them.
TEST_F(MediumTest, NothingOutsideIsTouchedWhileFoldersAreSwappedForLinks) {
    const char* const asked = std::getenv("NQP2_RACES");
    const int races = asked != nullptr ? std::atoi(asked) : 1;
    const char* const folders[] = {"CONTENTS",       "CONTENTS/CLIP",  "CONTENTS/VIDEO",
                                   "CONTENTS/AUDIO", "CONTENTS/PROXY", "CONTENTS/ICON"};
    using Request = std::function<Outcome(const std::string&)>;
    const Request arriving[] = {[&](const std::string& to) { return Import(to); },
                                [&](const std::string& to) { return Export(to); }};
    const Request changing[] = {
        [](const std::string& to) { return DeleteClip(L"0001AB", InterfaceRoot(to)); },
        [](const std::string& to) { return Icon(to); }};
    const auto race = [&](const Request& request, bool hasClip, const char* folder) {
        const test::TempFolder outside;
        const test::TempFolder to;
        CopyTo(outside.Path());
        CopyTo(to.Path());
        for (const auto& [name, content] : hasClip ? decltype(m_source)() : m_source) {
            std::filesystem::remove(outside.Path(name));
            std::filesystem::remove(to.Path(name));
        }
        const auto before = FilesBelow(outside.Path());
        {
            const Swapper swapper(to.Path(folder), outside.Path(folder));
            static_cast<void>(request(to.Path()));
        }
        EXPECT_TRUE(FilesBelow(outside.Path()) == before) << folder;
    };
    for (int i = 0; i < 2 * races; ++i) {
        for (const char* folder : folders) {
            for (int kind = 0; kind < 2; ++kind) {
                race(arriving[kind], false, folder);
                race(changing[kind], true, folder);
            }
        }
    }
    ExpectSourceUntouched();
}

TEST_F(MediumTest, ADestinationMayLieInTheCardAndBeALinkItself) {
    EXPECT_TRUE(Import(m_card.Folder().Path())) << "into itself: all is there";
    EXPECT_EQ(m_sizes.written, 0U);
    ExpectSourceUntouched();
    const std::string within = m_card.Folder().Path("CONTENTS/VIDEO/copy");
    ASSERT_TRUE(Import(within));
    EXPECT_TRUE(FilesBelow(within) == m_source);
    ASSERT_TRUE(Export(m_card.Folder().Path())) << "the card holds the source's folder";
    std::filesystem::remove_all(within);
    ExpectSourceUntouched();
    std::filesystem::create_symlink(m_to.Path(), m_to.Path() + "-link");
    EXPECT_TRUE(Import(m_to.Path() + "-link"));
    std::filesystem::remove(m_to.Path() + "-link");
    EXPECT_TRUE(FilesBelow(m_to.Path()) == m_source);
}

/// Nothing waits for the pipe's other end, and no clip arrives without its picture.
TEST_F(MediumTest, APipeInPlaceOfEssenceFails) {
    const std::string path = m_card.Folder().Path("CONTENTS/VIDEO/0001AB.MXF");
    std::filesystem::remove(path);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_THAT(Import(m_to.Path()).error, HasSubstr("is no file"));
    // One that takes the file's place later.
    std::filesystem::remove(path);
    AddWholeClip(m_card, "0001AB");
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem use(files);
    files.SetHook([&](Operation operation, const std::string& opened) {
        if (operation == Operation::Open && opened == path) {
            std::filesystem::remove(path);
            mkfifo(path.c_str(), 0600);
        }
    });
    EXPECT_THAT(Import(m_to.Path()).error, HasSubstr("not a regular file"));
    EXPECT_TRUE(FilesBelow(m_to.Path()).empty());
}

TEST_F(MediumTest, ACardThatIsPulledLeavesNothing) {
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem use(files);
    int blocks = 0;
    files.SetHook([&](Operation operation, const std::string&) {
        if (operation == Operation::ReadBlock && ++blocks == 20) {
            std::filesystem::remove_all(m_card.Folder().Path("CONTENTS"));
        }
    });
    EXPECT_THAT(Import(m_to.Path()).error, HasSubstr("No such file"));
    EXPECT_GT(blocks, 20);
    EXPECT_TRUE(FilesBelow(m_to.Path()).empty());
}

TEST_F(MediumTest, NamesThatNoCardHoldsFailWithAReason) {
    CopyTo(m_to.Path());
    for (const CString& name :
         {CString(L'A', 240), CString(L'\x3042', 240), CString(L"a/b"), CString(L"..\\b"),
          CString(L"E:b"), CString(L""), CString(L"."), CString(L"..")}) {
        m_watch = {};
        const Outcome outcomes[] = {ImportClip({m_card.Root(), name, InterfaceRoot(m_to.Path())},
                                               copy::kSmallestBlock, m_watch, m_sizes),
                                    ExportClips({InterfaceRoot(m_to.Path()), m_card.Root(), {name}},
                                                copy::kSmallestBlock, m_watch, m_sizes),
                                    DeleteClip(name, InterfaceRoot(m_to.Path()))};
        for (const Outcome& outcome : outcomes) {
            EXPECT_FALSE(outcome.error.empty()) << name.GetLength();
        }
    }
    EXPECT_THAT(Icon(m_to.Path(), CString(L'\x3042', 240)).error, HasSubstr("no clip"));
    EXPECT_TRUE(FilesBelow(m_to.Path()) == m_source);
}

} // namespace
} // namespace nqp2::worker
