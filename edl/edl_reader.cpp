// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "edl/edl_reader.h"

#include "edl/edl_layout.h"
#include "edl/edl_name.h"
#include "media/file_date.h"
#include "media/identifier.h"
#include "media/timecode.h"
#include "platform/case_blind.h"
#include "platform/case_fold.h"
#include "platform/file_find.h"
#include "platform/file_system.h"
#include "platform/folder_index.h"
#include "platform/guid_text.h"
#include "platform/number_text.h"
#include "platform/PathText.h"
#include "platform/read_ahead.h"
#include "platform/unicode.h"
#include "xml/dom/document.h"
#include "xml/dom/path_set.h"
#include "xml/dom/XmlLimits.h"
#include "xml/MarkupMSXML.h"
#include "xml/query_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nqp2::edl {
namespace {

using platform::ToInt32;

// Files up to this size are read ahead; larger ones are read piece by piece.
constexpr std::uint64_t kReadAheadLimit = std::uint64_t{256} * 1024;

enum class EventPath {
    Offset,
    Duration,
    SerialNo,
    ClipName,
    GlobalClipID,
    SourceOffset,
    Channel,
    AudioInOffset,
    AudioOutOffset,
    AudioLevel,
    Note,
    Count,
};
constexpr std::size_t kEventPaths = static_cast<std::size_t>(EventPath::Count);

// In the order of EventPath.
constexpr std::array<std::string_view, kEventPaths> kBelowEvent = {
    "Offset",
    "Duration",
    "Source/P2SerialNo.",
    "Source/ClipName",
    "Source/GlobalClipID",
    "Source/Offset",
    "Source/Channel",
    "AudioInOffset",
    "AudioOutOffset",
    "AudioLevel",
    "Note",
};

/// What the events of a list tell again and again, such as one card's serial number, is converted
/// once and shared by their records.
class RepeatedTexts {
public:
    CString TextOf(EventPath path, const dom::Node& node) {
        std::string scratch;
        const std::string_view utf8 = dom::Text(node, scratch);
        if (!scratch.empty()) {
            return platform::TextFromUtf8(utf8); // gone with this call
        }
        Last& last = m_last[static_cast<std::size_t>(path)];
        if (last.utf8 != utf8) {
            last = {utf8, platform::TextFromUtf8(utf8)};
        }
        return last.text;
    }
    const GUID& GuidOf(const CString& identifier) {
        if (!(m_identifier == identifier)) {
            m_identifier = identifier;
            m_guid = media::GuidFromIdentifier(identifier);
        }
        return m_guid;
    }

private:
    struct Last {
        std::string_view utf8; ///< in the document
        CString text;
    };
    std::array<Last, kEventPaths> m_last;
    CString m_identifier;
    GUID m_guid;
};

/// The texts of one event; of none at all when there is no node.
class EventTexts {
public:
    EventTexts(const dom::Node* event, RepeatedTexts& repeated) : m_repeated(repeated) {
        static const dom::PathSet paths(kBelowEvent);
        if (event != nullptr) {
            paths.Find(*event, m_nodes);
        }
    }
    [[nodiscard]] CString operator[](EventPath path) const {
        const dom::Node* const node = m_nodes[static_cast<std::size_t>(path)];
        return node != nullptr ? m_repeated.TextOf(path, *node) : CString();
    }
    [[nodiscard]] std::int32_t Number(EventPath path) const { return NumberOr(path, 0); }
    /// The default stands for a missing element and for one without text.
    [[nodiscard]] std::int32_t NumberOr(EventPath path, std::int32_t absent) const {
        const dom::Node* const node = m_nodes[static_cast<std::size_t>(path)];
        std::string scratch;
        const std::string_view text =
            node != nullptr ? dom::Text(*node, scratch) : std::string_view();
        return text.empty() ? absent : ToInt32(text);
    }

private:
    RepeatedTexts& m_repeated;
    std::array<dom::Node*, kEventPaths> m_nodes{};
};

/// Up to four words separated by blanks, each handed to `take` with its index.
template <class Take>
void ForEachWord(const CString& text, Take take) {
    constexpr int kWords = 4;
    std::wstring_view left = text.View();
    for (int i = 0; i < kWords; ++i) {
        left.remove_prefix(std::min(left.find_first_not_of(L' '), left.size()));
        if (left.empty()) {
            return;
        }
        const std::wstring_view word = left.substr(0, left.find(L' '));
        take(i, word);
        left.remove_prefix(word.size());
    }
}

/// The sum of source position and length less one, without leaving 32 bits.
std::int32_t LastFrame(std::int32_t offset, std::int32_t duration) {
    using Limits = std::numeric_limits<std::int32_t>;
    const std::int64_t last = std::int64_t{offset} + duration - 1;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(last, Limits::min(), Limits::max()));
}

void ReadEvent(const dom::Node* node, RepeatedTexts& repeated, tag_P2EDLClipTrackEvent& event) {
    const EventTexts texts(node, repeated);
    event.Offset = texts.Number(EventPath::Offset);
    event.Duration = texts.Number(EventPath::Duration);
    event.P2SerialNo = texts[EventPath::SerialNo];
    event.ClipName = texts[EventPath::ClipName];
    event.GlobalClipID = texts[EventPath::GlobalClipID];
    event.GlobalClipGuid = repeated.GuidOf(event.GlobalClipID);
    event.SourceOffset = texts.Number(EventPath::SourceOffset);
    event.SourceIn = event.SourceOffset;
    event.SourceOut = LastFrame(event.SourceOffset, event.Duration);
    ForEachWord(texts[EventPath::Channel],
                [&](int index, std::wstring_view word) { event.Channels[index] = ToInt32(word); });
    event.AudioInOffset = texts.NumberOr(EventPath::AudioInOffset, event.AudioInOffset);
    event.AudioOutOffset = texts.NumberOr(EventPath::AudioOutOffset, event.AudioOutOffset);
    ForEachWord(texts[EventPath::AudioLevel], [&](int index, std::wstring_view word) {
        const double level = platform::ToDouble(word);
        event.AudioLevels[index] = std::isfinite(level) ? level : 0.0;
    });
    event.Note = texts[EventPath::Note];
}

/// Splits the text at its first "/". False for a unit that cannot be one.
bool ReadEditUnit(const CString& text, tag_P2EDL::Fraction& unit) {
    const int slash = text.Find(L'/');
    if (slash < 0) {
        return true;
    }
    unit.Numerator = ToInt32(text.Left(slash).View());
    unit.Denominator = ToInt32(text.Mid(slash + 1).View());
    return unit.Numerator >= 1 && unit.Denominator > 0;
}

enum class HeadPath { Duration, EditUnit, StartTimecode, FrameRate, Codec, Thumbnail, Count };
constexpr std::size_t kHeadPaths = static_cast<std::size_t>(HeadPath::Count);

// In the order of HeadPath.
constexpr std::array<std::string_view, kHeadPaths> kBelowContent = {
    "Duration", "EditUnit", "StartTimecode", "FrameRate", "Codec", "Thumbnail/FrameOffset"};

/// The texts that stand once in a list.
class HeadTexts {
public:
    explicit HeadTexts(const dom::Document& document) {
        static const dom::PathSet paths(kBelowContent);
        paths.FindBehind("//P2Main/EditContent", document.Content()->DocumentNode(), m_nodes);
    }
    [[nodiscard]] CString operator[](HeadPath path) const {
        const dom::Node* const node = m_nodes[static_cast<std::size_t>(path)];
        return node != nullptr ? xml::TextOf(*node) : CString();
    }
    [[nodiscard]] std::int32_t Number(HeadPath path) const { return ToInt32((*this)[path].View()); }

private:
    std::array<dom::Node*, kHeadPaths> m_nodes{};
};

void ReadCodec(CMarkupMSXML& reader, const HeadTexts& head, tag_P2EDL& edl) {
    edl.Codec = head[HeadPath::Codec];
    const bool asked = IsClassCodec(edl.Codec);
    edl.Class50 =
        asked && reader.GetNodeAttribute(L"//P2Main/EditContent/Codec", L"Class") == L"50" ? 1 : 0;
}

/// The pictures that stand beside edit lists, each in a folder with the list's name. What the lists'
/// folder holds is read once: a search for each list would cost more with every list.
class IconLookup {
public:
    explicit IconLookup(const CString& folder)
        : m_index(platform::FolderIndex::Read(PosixPath(folder))) {}

    /// The picture's path as the record shows it; empty when there is none.
    [[nodiscard]] CString Beside(const platform::FoundFile& file) const {
        const std::optional<std::string> holder = HolderOf(file);
        const bool found = holder && platform::PathExists(FolderOf(file) + *holder + "/ICON.BMP");
        constexpr int kExtension = 4;
        return found ? file.path.Left(file.path.GetLength() - kExtension) + L"\\ICON.BMP"
                     : CString();
    }

private:
    /// The folder with the list's name, as it is spelled there. A list without a name (".XML") shares
    /// the lists' own folder.
    [[nodiscard]] std::optional<std::string> HolderOf(const platform::FoundFile& file) const {
        if (file.title.IsEmpty()) {
            return "";
        }
        const platform::FolderEntry* const entry =
            m_index.Find(platform::NameBytesFromText(file.title.View()));
        const bool holds = entry != nullptr && entry->kind == platform::EntryKind::Folder;
        return holds ? std::optional(entry->name) : std::nullopt;
    }
    /// As it stands, so that a picture is found at the first question.
    static std::string FolderOf(const platform::FoundFile& file) {
        return file.posixPath.substr(0, file.posixPath.find_last_of('/') + 1);
    }

    platform::FolderIndex m_index;
};

/// A list without events yields one, made of nothing. Kept: hosts rely on it.
void ReadEvents(CMarkupMSXML& reader, const wchar_t* path, tag_P2EDL& edl) {
    const IXMLDOMNodeListPtr list =
        reader.GetDocumentPtr()->SelectNodes(platform::Utf8FromText(path));
    edl.Events.SetSize(static_cast<std::int64_t>(std::max<std::size_t>(list->Length(), 1)));
    RepeatedTexts repeated;
    for (tag_P2EDLClipTrackEvent& event : edl.Events) {
        ReadEvent(list->Next().get(), repeated, event);
    }
}

const wchar_t* EventsPath(const CString& schema) {
    return platform::EqualNoCase(schema.Right(4).View(), L"v3.0")
               ? L"//P2Main/EditContent/TrackList/VideoTrack/EventList/Event"
               : L"//P2Main/EditContent/TrackList/ClipTrack/EventList/Event";
}

CString DateOf(const std::string& path) {
    platform::FileInfo info;
    const bool known = static_cast<bool>(platform::Files().Stat(path, info));
    return media::FileDateText(known ? std::optional(info.created) : std::nullopt);
}

bool LoadFile(CMarkupMSXML& reader, const CString& path, const platform::IoStatus& status,
              const std::string& content) {
    return status ? reader.LoadBytes(content) != 0 : reader.LoadXml(path) != 0;
}

/// Reads one file. Returns false, with the reason in `loss`, when it gives no record.
bool TakeFile(const platform::FoundFile& file, const std::string& content, CMarkupMSXML& reader,
              tag_P2EDL& edl, SkippedList& loss) {
    if (!loss.status && loss.status.error != platform::IoError::TooLarge) {
        return false;
    }
    const bool loaded = LoadFile(reader, file.path, loss.status, content);
    loss.status = {}; // too large to be read at once is no fault
    if (!loaded) {
        loss.error = reader.GetDocumentPtr()->LastError();
        return false;
    }
    edl.Identity = platform::NewGuid();
    edl.Date = DateOf(file.posixPath);
    edl.Name = file.title;
    return ReadEditList(reader, edl);
}

/// Folders are no files; all else that has a list's name is one or is skipped.
std::vector<platform::FoundFile> FilesIn(const CString& folder, platform::IoStatus& status) {
    std::vector<platform::FoundFile> files = platform::FindFiles(folder + kEditLists, status);
    std::erase_if(files, [](const platform::FoundFile& file) { return file.isFolder; });
    return files;
}

bool IsReadable(const platform::FoundFile& file) {
    return !file.isSpecial && file.pathIsSafe;
}

std::vector<std::string> PathsOf(const std::vector<platform::FoundFile>& files) {
    std::vector<std::string> paths;
    for (const platform::FoundFile& file : files) {
        if (IsReadable(file)) {
            paths.push_back(file.posixPath);
        }
    }
    return paths;
}

/// What stands for reading a special file: the opening alone of a device can do harm.
platform::IoStatus NotOpened() {
    return {platform::IoError::NotAFile, "it is no regular file"};
}

} // namespace

bool ReadEditList(CMarkupMSXML& reader, tag_P2EDL& edl) {
    const HeadTexts head(*reader.GetDocumentPtr());
    edl.Duration = head.Number(HeadPath::Duration);
    if (!ReadEditUnit(head[HeadPath::EditUnit], edl.EditUnit)) {
        return false;
    }
    edl.StartTimecode = media::EditFrameCount(head[HeadPath::StartTimecode].View(),
                                              edl.EditUnit.Numerator, edl.EditUnit.Denominator);
    edl.FrameRate = head[HeadPath::FrameRate];
    ReadCodec(reader, head, edl);
    edl.ThumbnailFrame = head.Number(HeadPath::Thumbnail);
    const CString schema = reader.GetNodeAttribute(L"P2Main", L"");
    if (schema.Find(L"EditMetadata") < 0) {
        return false;
    }
    ReadEvents(reader, EventsPath(schema), edl);
    if (edl.IconPath.IsEmpty()) {
        edl.IconPath = edl.Events[0].Clip.IconPath;
    }
    return true;
}

platform::IoStatus ScanEditLists(const CString& folder, CMarkupMSXML& reader,
                                 CArray<tag_P2EDL>& edls, std::vector<SkippedList>* skipped) {
    platform::IoStatus folderStatus;
    const std::vector<platform::FoundFile> files = FilesIn(folder, folderStatus);
    const IconLookup icons(folder);
    platform::ReadAhead contents(PathsOf(files), std::min(kReadAheadLimit, MaxXmlFileSize()));
    std::string content;
    for (const platform::FoundFile& file : files) {
        SkippedList loss;
        loss.status = IsReadable(file) ? contents.Next(content) : NotOpened();
        tag_P2EDL edl;
        edl.IconPath = icons.Beside(file);
        if (TakeFile(file, content, reader, edl, loss)) {
            edls.Add(std::move(edl));
        } else if (skipped != nullptr) {
            loss.file = file;
            skipped->push_back(std::move(loss));
        }
    }
    return folderStatus;
}

} // namespace nqp2::edl
