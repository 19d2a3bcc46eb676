// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT
//
// Whatever allocation fails, an operation gives its failure value: nothing is thrown, no file is
// half written, nothing is printed. Each operation runs again and again, and each time another of
// its allocations fails, that one alone or it and all that follow. NQP2_ALLOCATIONS=all takes every
// one; some tens of each operation are the default.

#include "NQP2ParserU/ClipFiles.h"
#include "NQP2ParserU/ClipMetadata.h"
#include "NQP2ParserU/ComError.h"
#include "NQP2ParserU/DebugOutput.h"
#include "NQP2ParserU/IngestList.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/NQXmlParser.h"
#include "tests/clips/clip_show.h"
#include "tests/edl/edl_test.h"
#include "tests/support/failing_memory.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <unistd.h>

namespace nqp2::parser {
namespace {

using clips::ClipShow;
using Change = std::function<bool()>; ///< makes no allocation of its own

using namespace test::memory; // NOLINT(google-build-using-namespace)

/// Whether it was done, or nothing when it threw; the `number`-th allocation fails; 0: none.
std::optional<bool> RunWithout(long number, bool andAllThatFollow, const Change& run) {
    allocationsMade = 0;
    failing = number;
    allFollowingFail = andAllThatFollow;
    std::optional<bool> isDone;
    isCounting = true;
    try {
        isDone = run();
    } catch (const _com_error&) {
        isDone = false; // those that may throw it say so
    } catch (...) {
        isCounting = false;
    }
    isCounting = false;
    return isDone;
}

/// `check` is told whether each run was done.
void Sweep(
    const Change& run, const std::function<void(bool)>& check,
    const std::function<void()>& prepare = [] {}) {
    prepare();
    ASSERT_EQ(RunWithout(0, false, run), true);
    const long count = allocationsMade;
    check(true);
#ifdef NQP2_MEMORY_IS_INSTRUMENTED
    GTEST_SKIP() << "a sanitizer has taken the place of malloc";
#endif
    ASSERT_GT(count, 10);
    constexpr long kSampled = 60;
    const bool isEach = std::getenv("NQP2_ALLOCATIONS") != nullptr;
    const long step = isEach ? 1 : std::max(count / kSampled, 1L);
    for (const bool andAllThatFollow : {false, true}) {
        for (long number = 1; number <= count; number += step) {
            SCOPED_TRACE("allocation " + std::to_string(number) + " of " + std::to_string(count) +
                         (andAllThatFollow ? " and all that follow" : ""));
            prepare();
            testing::internal::CaptureStderr();
            const std::optional<bool> isDone = RunWithout(number, andAllThatFollow, run);
            EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
            EXPECT_TRUE(isDone.has_value()) << "it threw";
            check(isDone.value_or(false));
        }
    }
}

/// All that lies below a folder: files by name with their bytes.
using Files = std::map<std::string, std::string>;
Files FilesBelow(const std::string& folder) {
    Files files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            std::ifstream file(entry.path(), std::ios::binary);
            files[std::filesystem::relative(entry.path(), folder)] = {
                std::istreambuf_iterator<char>(file), {}};
        }
    }
    return files;
}

/// A card with a few clips.
class OutOfMemory : public edl::EdlTest {
protected:
    OutOfMemory() {
        for (const char* const name : {"0001AA", "0002BB", "0003CC"}) {
            AddClip(name, {{"ClipMetadata/MemoList/Memo/Text", "a memo of some length"}});
            m_card.AddFile(std::string("VIDEO/") + name + ".MXF");
        }
        SetMessageBoxSink([](const CString&) {});
        m_edl.Events.SetSize(3);
    }
    ~OutOfMemory() override { SetMessageBoxSink({}); }

    [[nodiscard]] ClipShow::Shown Shown(const _tag_P2Clip& clip) const {
        return ClipShow(clip, m_card.Contents()).Fields();
    }
    /// Each change either is made or leaves the files of the folder as they were.
    void SweepChange(const char* folder, const Change& change) {
        const std::string place = m_card.Folder().MakeFolder(folder);
        const Files before = FilesBelow(place);
        Files after;
        const auto restore = [&] {
            std::filesystem::remove_all(place);
            m_card.Folder().MakeFolder(folder);
            for (const auto& [name, bytes] : before) {
                m_card.Folder().Write(std::string(folder) + "/" + name, bytes);
            }
        };
        const auto check = [&](bool isDone) {
            const Files found = FilesBelow(place);
            after = after.empty() ? found : after;
            EXPECT_EQ(found, isDone ? after : before);
        };
        Sweep(change, check, restore);
        restore();
    }

    const CString m_root = m_card.Root();
    const CString m_name = L"0001AA";
    tag_P2EDL m_edl = OneEvent();
};

TEST_F(OutOfMemory, ReadingClips) {
    CArray<_tag_P2Clip> clips = Scan();
    std::map<CString, ClipShow::Shown> whole;
    for (const _tag_P2Clip& clip : clips) {
        whole[clip.ClipName] = Shown(clip);
    }
    Sweep(
        [&] {
            clips.RemoveAll();
            m_report = {};
            return m_parser.LoadClipEx(m_root, clips, 1, m_report) == 0;
        },
        [&](bool isDone) {
            for (const _tag_P2Clip& clip : clips) {
                EXPECT_EQ(Shown(clip), whole[clip.ClipName]);
            }
            EXPECT_TRUE(!isDone || clips.GetSize() + m_report.skipped.GetSize() == 3);
        });
    _tag_P2Clip clip;
    DiskFormat format;
    m_parser.LoadClipInfo(m_root, m_name, clip);
    const ClipShow::Shown named = Shown(clip);
    Sweep(
        [&] {
            clip = {};
            return m_parser.LoadClipInfo(m_root, m_name, clip) == 0 &&
                   m_parser.GetDiskFormat(m_root, format) == 0;
        },
        [&](bool isDone) { EXPECT_TRUE(!isDone || Shown(clip) == named); });
}

TEST_F(OutOfMemory, MetadataAndFiles) {
    m_card.AddFile("CLIP/0004DD.XML", "<?tree?><a><b c='1'>text</b></a>");
    const CArray<_tag_P2Clip> clips = Scan();
    ClipMetadata metadata;
    CString problem;
    CArray<ClipFile> files;
    CArray<LooseFile> loose;
    std::int64_t texts = 0;
    std::int64_t all = 0; // of a run that had memory enough, the first
    Sweep(
        [&] {
            ClipMetadataReader reader(m_root);
            ClipFileReader fileReader(m_root);
            texts = 0;
            bool isDone = true;
            for (const _tag_P2Clip& clip : clips) {
                isDone = reader.Read(clip, metadata, problem) == MetadataStatus::Read &&
                         fileReader.Read(clip, files) && isDone;
                texts += metadata.others.GetSize() + files.GetSize();
            }
            return fileReader.LooseFiles(loose) && isDone;
        },
        [&](bool isDone) {
            all = all == 0 ? texts : all;
            EXPECT_TRUE(!isDone || (texts == all && loose.IsEmpty()));
        });
}

TEST_F(OutOfMemory, AParsersLife) {
    const auto live = [] {
        CNQP2Parser parser;
        parser.Init();
        return parser.Release() == 0;
    };
    Sweep(live, [](bool) {});
}

TEST_F(OutOfMemory, EditLists) {
    const CString name = L"CUT";
    m_card.Folder().Write("EDITLIST/CUT.XML", "<old/>");
    SweepChange("EDITLIST", [&] { return m_parser.SaveToEdl(m_root, m_edl, 1, name) == 0; });
    CArray<tag_P2EDL> edls;
    ASSERT_EQ(m_parser.SaveToEdl(m_root, m_edl, 1, name), 0);
    Sweep(
        [&] {
            edls.RemoveAll();
            m_report = {};
            return m_parser.LoadCardEdls(m_root, edls, m_report) == 0;
        },
        [&](bool isDone) {
            EXPECT_TRUE(!isDone || edls.GetSize() + m_report.skipped.GetSize() > 0);
            EXPECT_TRUE(edls.IsEmpty() || edls[0].Events.GetSize() == 3);
        });
}

TEST_F(OutOfMemory, IngestList) {
    const IngestClips clips = {{L"0001AA", {{1, 2}, {3, 4}}}, {L"0002BB", {{5, 6}}}};
    IngestRequest request = {{m_root, clips}};
    const CString fileName = L"Ingest.xml";
    const std::string written = m_card.Folder().Path("USERDATA/Ingest.xml");
    SweepChange("USERDATA", [&] { // a file that cannot be saved is told to the debugger only
        return m_parser.WriteIngestXML(fileName, request) == 0 &&
               access(written.c_str(), F_OK) == 0;
    });
    const auto add = [&] { return AddToIngestList(m_root, clips).status == IngestStatus::Done; };
    SweepChange("USERDATA", add);
    ASSERT_TRUE(add());
    SweepChange("USERDATA", add);
    SweepChange("USERDATA", [&] {
        return RemoveFromIngestList(m_root, clips.begin()->first).status == IngestStatus::Done;
    });
    IngestList read;
    const auto load = [&] {
        read.clear();
        return LoadIngestList(m_root, read);
    };
    Sweep(load, [&](bool isDone) { EXPECT_EQ(read.size(), isDone ? 2U : 0U); });
}

/// The interface's values that operations are called with, made beforehand.
struct Values {
    CString path;
    CString a = L"a-name-that-is-not-short", b = L"b", text = L"text that takes memory of its own";
    _bstr_t fragment = L"<x:f xmlns:x='not a uri'><g h='i'>text</g></x:f>";
    _bstr_t query = L"//e:PARAM/e:NAME", rootQuery = L"root/b";
    _bstr_t prefixes = L"xmlns:e='urn:schemas-Professional-Plug-in:P2:EditMetadata:v2.0'";
    _variant_t number = 25, words = L"some words for an element";
};

TEST_F(OutOfMemory, Builder) {
    const Values with = {InterfaceRoot(m_card.Folder().Write("built/b.xml", "<old/>"))};
    SweepChange("built", [&] {
        CNQXmlParser builder;
        bool done = builder.CreateP2MainRoot(CT_DV25_50I, 1) != 0 &&
                    builder.AddChildElement(with.a, with.b, with.text) != 0 &&
                    builder.AddChildTextNode(with.b, with.words, with.a, with.text) != 0 &&
                    builder.AddParam(with.a, with.number) != 0 &&
                    builder.AddXmlFragment(with.fragment) != 0 && builder.BackToParent() != 0;
        done = done && builder.SetSelectNamespace(with.prefixes) == 0 &&
               builder.GetNodeList(with.query).GetNextNode() != 0 &&
               builder.GetXml().length() > 0 && builder.SaveXml(with.path) != 0;
        if (done) {
            CNQXmlParser reader;
            reader.LoadXml(with.path);
            reader.SetXml(with.fragment);
        }
        return done;
    });
}

TEST_F(OutOfMemory, Cursor) {
    const Values with = {InterfaceRoot(m_card.Folder().Write("edited/c.xml", "<old/>"))};
    SweepChange("edited", [&] {
        CMarkupMSXML markup;
        bool done = markup.CreateMainRoot(L"root", L"text of the root element") != 0 &&
                    markup.AddChildElem(with.a, with.text) != 0 &&
                    markup.AddChildElem(with.b, 5U) != 0 && markup.AddChildElem(L"c", 2.5) != 0 &&
                    markup.SetChildAttrib(with.a, with.text) != 0 &&
                    markup.AddChildSubDoc(with.fragment) != 0 &&
                    markup.SetChildData(L"other data of some length", 1) != 0;
        markup.ResetPos();
        done = done && markup.FindChildElem(with.b) != 0 && markup.RemoveChildElem() != 0 &&
               markup.IntoElem() != 0 && markup.AddNode(CMarkupMSXML::kCommentNode, L"note") != 0 &&
               markup.OutOfElem() != 0 && markup.GetDoc().GetLength() > 100 &&
               markup.GetTagName().GetLength() == 4 && markup.GetNodeText(with.a, 1).IsEmpty() &&
               markup.Save(with.path) != 0;
        if (done) {
            CMarkupMSXML reader;
            reader.Load(with.path);
            reader.GetNode(with.rootQuery);
            reader.SetDoc(L"<a>a document that <b/> has an error</c>");
        }
        return done;
    });
}

} // namespace
} // namespace nqp2::parser
