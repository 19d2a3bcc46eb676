// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT
//
// Whatever allocation fails, an operation gives its failure value: nothing is thrown, no file is half
// written, nothing is printed. Each operation runs again and again, and each time another of its
// allocations fails, that one alone or it and all that follow. NQP2_ALLOCATIONS=all takes every
// one; some tens of each operation are the default.

#include "NQP2ParserU/ComError.h"
#include "NQP2ParserU/DebugOutput.h"
#include "NQP2ParserU/IngestList.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/NQXmlParser.h"
#include "tests/clips/clip_show.h"
#include "tests/support/card_builder.h"
#include "tests/support/child_process.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <unistd.h>

namespace {

std::atomic<long> allocationsLeft = 0; ///< the one that brings it to 0 fails
std::atomic<bool> isCounting = false;
std::atomic<bool> allFollowingFail = false;
std::atomic<long> allocationsMade = 0;

} // namespace

#ifndef NQP2_MEMORY_IS_INSTRUMENTED
namespace {

bool Fails() noexcept {
    if (!isCounting.load()) {
        return false;
    }
    ++allocationsMade;
    const long left = --allocationsLeft;
    return left == 0 || (left < 0 && allFollowingFail);
}

void* OrFail(void* (*allocate)(std::size_t, std::size_t), std::size_t a, std::size_t b) noexcept {
    if (Fails()) {
        errno = ENOMEM;
        return nullptr;
    }
    return allocate(a, b);
}

} // namespace

// The C library's own, which it offers to who takes their place.
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier)
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
// NOLINTEND(bugprone-reserved-identifier)

void* malloc(std::size_t size) {
    return OrFail([](std::size_t a, std::size_t) { return __libc_malloc(a); }, size, 0);
}
void* calloc(std::size_t count, std::size_t size) {
    return OrFail(__libc_calloc, count, size);
}
void* realloc(void* memory, std::size_t size) {
    return Fails() ? nullptr : __libc_realloc(memory, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return OrFail(__libc_memalign, alignment, size);
}
}
#endif

namespace nqp2::parser {
namespace {

/// What is written to a descriptor while this lives.
class Overheard {
public:
    explicit Overheard(int descriptor)
        : m_descriptor(descriptor), m_before(dup(descriptor)), m_file(std::tmpfile()) {
        dup2(fileno(m_file), descriptor);
    }
    ~Overheard() {
        dup2(m_before, m_descriptor);
        close(m_before);
        std::fclose(m_file);
    }
    Overheard(const Overheard&) = delete;
    Overheard& operator=(const Overheard&) = delete;

    [[nodiscard]] std::string Text() const {
        std::string text(static_cast<std::size_t>(lseek(fileno(m_file), 0, SEEK_END)), ' ');
        const ssize_t count = pread(fileno(m_file), text.data(), text.size(), 0);
        return text.substr(0, static_cast<std::size_t>(count));
    }

private:
    int m_descriptor;
    int m_before;
    std::FILE* m_file;
};

enum class Outcome { Done, Failed, Threw };

/// Runs an operation in which the `number`-th allocation fails; 0: none.
Outcome RunWithout(long number, bool andAllThatFollow, const std::function<bool()>& operation) {
    allocationsMade = 0;
    allocationsLeft = number;
    allFollowingFail = number > 0 && andAllThatFollow;
    isCounting = true;
    Outcome outcome = Outcome::Threw;
    try {
        outcome = operation() ? Outcome::Done : Outcome::Failed;
    } catch (const _com_error&) {
        outcome = Outcome::Failed; // those that may throw it say so
    } catch (...) {
        isCounting = false;
    }
    isCounting = false;
    return outcome;
}

/// One operation, what must be true after it has failed, and what must be after it was done.
struct Operation {
    std::function<void()> prepare;
    std::function<bool()> run; ///< makes no allocation of its own
    std::function<void(Outcome)> check;
};

void Sweep(const Operation& operation) {
    operation.prepare();
    ASSERT_EQ(RunWithout(0, false, operation.run), Outcome::Done);
    const long count = allocationsMade;
    operation.check(Outcome::Done);
#ifdef NQP2_MEMORY_IS_INSTRUMENTED
    GTEST_SKIP() << "a sanitizer has taken the place of malloc";
#endif
    ASSERT_GT(count, 10);
    constexpr long kSampled = 60;
    const char* const asked = std::getenv("NQP2_ALLOCATIONS");
    const long step = asked != nullptr ? 1 : std::max(count / kSampled, 1L);
    for (const bool andAllThatFollow : {false, true}) {
        for (long number = 1; number <= count; number += step) {
            SCOPED_TRACE("allocation " + std::to_string(number) + " of " + std::to_string(count) +
                         (andAllThatFollow ? " and all that follow" : ""));
            operation.prepare();
            const Overheard output(STDERR_FILENO);
            const Outcome outcome = RunWithout(number, andAllThatFollow, operation.run);
            EXPECT_NE(outcome, Outcome::Threw);
            EXPECT_EQ(output.Text(), "");
            operation.check(outcome);
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

constexpr const wchar_t* kClipID =
    L"060A2B340101010501010D4313000000798AE7C6A09E4B6FA5A11F6E2D08E5C0";

/// A card with a few clips, an edit list and an ingest list.
class OutOfMemory : public testing::Test {
protected:
    OutOfMemory() {
        for (const char* const name : {"0001AA", "0002BB", "0003CC"}) {
            m_card.AddClip(name, {{"GlobalClipID", platform::Utf8FromText(kClipID)},
                                  {"Duration", "25"},
                                  {"EditUnit", "1/25"},
                                  {"EssenceList/Video/FrameRate", "50i"},
                                  {"EssenceList/Video/Codec", "DV25_411"},
                                  {"ClipMetadata/MemoList/Memo/Text", "a memo of some length"}});
            m_card.AddFile(std::string("VIDEO/") + name + ".MXF");
            m_card.AddFile(std::string("AUDIO/") + name + "00.MXF");
        }
        m_card.Folder().MakeFolder("EDITLIST");
        SetMessageBoxSink([](const CString&) {});
        m_parser.Init();
        for (int i = 0; i < 3; ++i) {
            tag_P2EDLClipTrackEvent event;
            event.ClipName = L"0002BB";
            event.GlobalClipID = kClipID;
            event.GlobalClipGuid = CNQP2Parser::GuidFromUMID(kClipID);
            event.Duration = 10;
            m_edl.Events.Add(event);
        }
    }
    ~OutOfMemory() override {
        m_parser.Release();
        SetMessageBoxSink({});
    }

    /// Each change either is made or leaves the files of the folder as they were.
    void SweepChange(const char* folder, const std::function<bool()>& change,
                     bool isSavingUntold = false) {
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
        Sweep({restore, change, [&](Outcome outcome) {
                   after = after.empty() ? FilesBelow(place) : after;
                   const Files found = FilesBelow(place);
                   if (!isSavingUntold || found != before) {
                       EXPECT_EQ(found, outcome == Outcome::Done ? after : before);
                   }
               }});
        restore();
    }

    test::CardBuilder m_card;
    const CString m_root = m_card.Root();
    CNQP2Parser m_parser;
    tag_P2EDL m_edl;
};

TEST_F(OutOfMemory, CardScan) {
    CArray<_tag_P2Clip> clips;
    ScanReport report;
    std::map<std::string, clips::ClipShow::Shown> whole;
    Sweep({[&] {
               clips.RemoveAll();
               report = {};
           },
           [&] { return m_parser.LoadClipEx(m_root, clips, 1, report) == 0; },
           [&](Outcome outcome) {
               std::map<std::string, clips::ClipShow::Shown> found;
               for (const _tag_P2Clip& clip : clips) {
                   const clips::ClipShow shown(clip, m_card.Contents());
                   found[shown["ClipName"]] = shown.Fields();
               }
               whole = whole.empty() ? found : whole;
               for (const auto& [name, fields] : found) {
                   EXPECT_EQ(fields, whole[name]);
               }
               if (outcome == Outcome::Done) {
                   EXPECT_EQ(clips.GetSize() + report.skipped.GetSize(), 3);
               }
           }});
}

TEST_F(OutOfMemory, OneClipAndTheCardsFormat) {
    _tag_P2Clip clip;
    DiskFormat format;
    const CString name = L"0002BB";
    std::map<std::string, std::string> whole;
    Sweep({[&] { clip = {}; },
           [&] {
               return m_parser.LoadClipInfo(m_root, name, clip) == 0 &&
                      m_parser.GetDiskFormat(m_root, format) == 0;
           },
           [&](Outcome outcome) {
               if (outcome == Outcome::Done) {
                   const clips::ClipShow::Shown found =
                       clips::ClipShow(clip, m_card.Contents()).Fields();
                   whole = whole.empty() ? found : whole;
                   EXPECT_EQ(found, whole);
               }
           }});
}

TEST_F(OutOfMemory, AParsersLife) {
    Sweep({[] {},
           [] {
               CNQP2Parser parser;
               parser.Init();
               return parser.Release() == 0;
           },
           [](Outcome) {}});
}

TEST_F(OutOfMemory, EditLists) {
    const CString name = L"CUT";
    m_card.Folder().Write("EDITLIST/CUT.XML", "<old/>");
    SweepChange("EDITLIST", [&] { return m_parser.SaveToEdl(m_root, m_edl, 1, name) == 0; });
    const CString unnamed;
    CString saved;
    SweepChange("EDITLIST",
                [&] { return m_parser.SaveCardEdl(m_root, m_edl, unnamed, saved) == 0; });
    CArray<tag_P2EDL> edls;
    ScanReport report;
    ASSERT_EQ(m_parser.SaveToEdl(m_root, m_edl, 1, name), 0);
    Sweep({[&] {
               edls.RemoveAll();
               report = {};
           },
           [&] { return m_parser.LoadCardEdls(m_root, edls, report) == 0; },
           [&](Outcome outcome) {
               if (outcome == Outcome::Done) {
                   EXPECT_TRUE(edls.GetSize() == 1 || !report.skipped.IsEmpty());
               }
               EXPECT_TRUE(edls.IsEmpty() || edls[0].Events.GetSize() == 3);
           }});
}

TEST_F(OutOfMemory, IngestList) {
    IngestClips clips = {{L"0001AA", {{1, 2}, {3, 4}}}, {L"0002BB", {{5, 6}}}};
    IngestRequest request = {{m_root, clips}};
    const CString fileName = L"Ingest.xml";
    const auto isDone = [](const IngestResult& result) {
        return result.status == IngestStatus::Done;
    };
    SweepChange("USERDATA", [&] { return isDone(AddToIngestList(m_root, clips)); });
    ASSERT_EQ(AddToIngestList(m_root, clips).status, IngestStatus::Done);
    SweepChange("USERDATA", [&] { return isDone(AddToIngestList(m_root, clips)); });
    SweepChange("USERDATA",
                [&] { return isDone(RemoveFromIngestList(m_root, clips.begin()->first)); });
    IngestList read;
    Sweep({[&] { read.clear(); }, [&] { return LoadIngestList(m_root, read); },
           [&](Outcome outcome) { EXPECT_EQ(read.size(), outcome == Outcome::Done ? 2U : 0U); }});
    SweepChange(
        "USERDATA", [&] { return m_parser.WriteIngestXML(fileName, request) == 0; }, true);
}

/// The interface's values that operations are called with, made beforehand.
struct Values {
    CString a = L"a-name-that-is-not-short", b = L"b", text = L"text that takes memory of its own";
    CString path;
    _bstr_t fragment = L"<x:f xmlns:x='not a uri'><g h='i'>text</g></x:f>";
    _bstr_t query = L"//e:PARAM/e:NAME", rootQuery = L"root/b";
    _bstr_t prefixes = L"xmlns:e='urn:schemas-Professional-Plug-in:P2:EditMetadata:v2.0'";
    _variant_t number = 25;
    _variant_t words = L"some words for an element";
    CString parameters = L"PARAM", none;
};

TEST_F(OutOfMemory, Builder) {
    Values values;
    values.path = platform::TextFromUtf8(m_card.Folder().Path("built/b.xml"));
    m_card.Folder().Write("built/b.xml", "<old/>");
    SweepChange("built", [&] {
        CNQXmlParser builder;
        bool done =
            builder.CreateP2MainRoot(CT_DV25_50I, 1) != 0 &&
            builder.AddChildElement(values.a, values.b, values.text) != 0 &&
            builder.AddChildTextNode(values.b, values.words, values.a, values.text) != 0 &&
            builder.AddParam(values.text.IsEmpty() ? values.b : values.a, values.number) != 0 &&
            builder.AddXmlFragment(values.fragment) != 0 && builder.BackToParent() != 0;
        done = done && builder.SetSelectNamespace(values.prefixes) == 0 &&
               builder.GetNodeList(values.query).GetNextNode() != 0 &&
               builder.GetXml().length() > 0 && builder.SaveXml(values.path) != 0;
        if (done) {
            CNQXmlParser reader;
            reader.LoadXml(values.path);
            reader.SetXml(values.fragment);
        }
        return done;
    });
}

TEST_F(OutOfMemory, Cursor) {
    Values values;
    values.path = platform::TextFromUtf8(m_card.Folder().Path("edited/c.xml"));
    m_card.Folder().Write("edited/c.xml", "<old/>");
    SweepChange("edited", [&] {
        CMarkupMSXML markup;
        bool done = markup.CreateMainRoot(L"root", L"text of the root element") != 0 &&
                    markup.AddChildElem(values.a, values.text) != 0 &&
                    markup.AddChildElem(values.b, 5U) != 0 && markup.AddChildElem(L"c", 2.5) != 0 &&
                    markup.SetChildAttrib(values.a, values.text) != 0 &&
                    markup.AddChildSubDoc(values.fragment) != 0 &&
                    markup.SetChildData(L"other data of some length", 1) != 0;
        markup.ResetPos();
        done = done && markup.FindChildElem(values.b) != 0 && markup.RemoveChildElem() != 0 &&
               markup.IntoElem() != 0 && markup.AddNode(CMarkupMSXML::kCommentNode, L"note") != 0 &&
               markup.OutOfElem() != 0 && markup.GetDoc().GetLength() > 100 &&
               markup.GetTagName().GetLength() == 4 && markup.GetNodeText(values.a, 1).IsEmpty() &&
               markup.Save(values.path) != 0;
        if (done) {
            CMarkupMSXML reader;
            reader.Load(values.path);
            reader.GetNode(values.rootQuery);
            reader.SetDoc(L"<a>a document that <b/> has an error</c>");
        }
        return done;
    });
}

} // namespace
} // namespace nqp2::parser
