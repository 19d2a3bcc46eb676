// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "edl/edl_writer.h"

#include "edl/edl_layout.h"
#include "edl/edl_name.h"
#include "media/card_layout.h"
#include "media/identifier.h"
#include "media/timecode.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "NQP2ParserU/PathText.h"
#include "platform/case_blind.h"
#include "platform/folder.h"
#include "platform/folder_index.h"
#include "platform/guard.h"
#include "platform/guid_text.h"
#include "platform/unicode.h"
#include "xml/dom/document.h"
#include "xml/metadata_writer.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace nqp2::edl {
namespace {

/// What the edit is made of, told by a source clip on the card.
struct Reference {
    CString editUnit;
    CString frameRate;
    CString codec;
    bool class50 = false;
};

/// The clips' folder, which is listed once however many clips are missing from it.
class ClipFolder {
public:
    explicit ClipFolder(CString folder)
        : m_folder(std::move(folder)),
          m_real(platform::FindExisting(PosixPath(m_folder)).value_or("")) {}

    /// The path of a clip's file; empty when there is none.
    CString Find(const CString& clipName) {
        const CString name = clipName + media::kXmlExtension;
        const std::string bytes = platform::NameBytesFromText(name.View());
        platform::FileInfo info;
        if (m_real.empty()) {
            return {};
        }
        if (platform::Files().Stat(m_real + bytes, info)) {
            return info.kind != platform::EntryKind::Folder ? m_folder + name : CString();
        }
        if (!m_index) {
            m_index = platform::FolderIndex::Read(m_real);
        }
        const platform::FolderEntry* const entry = m_index->Find(bytes);
        return entry != nullptr && entry->kind != platform::EntryKind::Folder
                   ? m_folder + platform::TextFromNameBytes(entry->name)
                   : CString();
    }

private:
    CString m_folder;
    std::string m_real;
    std::optional<platform::FolderIndex> m_index;
};

CString ClipContent(CMarkupMSXML& reader, const wchar_t* path) {
    return reader.GetNodeText(CString(L"//P2Main/ClipContent/") + path, kIgnoreMissing);
}

Reference ReadReference(CMarkupMSXML& reader) {
    Reference reference;
    reference.editUnit = ClipContent(reader, L"EditUnit");
    reference.frameRate = ClipContent(reader, L"EssenceList/Video/FrameRate");
    reference.codec = ClipContent(reader, L"EssenceList/Video/Codec");
    reference.class50 =
        IsClassCodec(reference.codec) &&
        reader.GetNodeAttribute(L"//P2Main/ClipContent/EssenceList/Video/Codec", L"Class") == L"50";
    return reference;
}

/// The first event's clip that is on the card and carries the event's identifier. Nothing when
/// there is none, and when a clip file that is there does not load.
std::optional<Reference> FindReference(ClipFolder clips, const tag_P2EDL& edl,
                                       CMarkupMSXML& reader) {
    const platform::MemoryWatch watch;
    for (const tag_P2EDLClipTrackEvent& event : edl.Events) {
        const CString path =
            media::IsPlainName(event.ClipName) ? clips.Find(event.ClipName) : CString();
        if (path.IsEmpty()) {
            continue;
        }
        if (reader.LoadXml(path) == 0) {
            return std::nullopt;
        }
        const GUID clip = media::GuidFromIdentifier(ClipContent(reader, L"GlobalClipID"));
        if (clip == media::GuidFromIdentifier(event.GlobalClipID)) {
            Reference reference = ReadReference(reader);
            watch.Require();
            return reference.codec.IsEmpty() ? std::nullopt : std::optional(reference);
        }
    }
    return std::nullopt;
}

class Writer : xml::MetadataWriter {
public:
    Writer(const tag_P2EDL& edl, const Reference& reference)
        : MetadataWriter(CodeTypeFromCodec(reference.codec, L"50i", 0, L"50"), 1), m_edl(edl),
          m_reference(reference), m_rate(media::NominalRate(reference.frameRate.View())) {}

    bool Write() {
        Open(L"EditContent");
        WriteHead();
        Open(L"TrackList");
        Open(L"ClipTrack");
        Open(L"EventList");
        for (const tag_P2EDLClipTrackEvent& event : m_edl.Events) {
            WriteEvent(event);
        }
        return IsSound();
    }

    std::optional<std::string> TextToSave() { return Builder().GetDocumentPtr()->TextToSave(); }

private:
    void WriteHead() {
        Number(L"Duration", m_edl.Duration);
        ValueText(L"EditUnit", m_reference.editUnit);
        ValueText(L"StartTimecode", L"00:00:00:00");
        ValueText(L"FrameRate", m_reference.frameRate);
        // One codec alone carries its class, though four are asked for it: kept.
        const bool carriesClass = m_reference.codec == L"AVC-I_1080/50i";
        Text(L"Codec", m_reference.codec, carriesClass ? L"Class" : L"",
             m_reference.class50 ? L"50" : L"100");
    }

    void WriteEvent(const tag_P2EDLClipTrackEvent& event) {
        CString identifier;
        Require(media::IdentifierForGuidText(platform::GuidText(event.GlobalClipGuid), event.Note,
                                             identifier));
        const std::int64_t last = std::int64_t{event.SourceOffset} + event.Duration - 1;
        Open(L"Event");
        Number(L"Offset", event.Offset);
        Number(L"Duration", event.Duration);
        Open(L"Source");
        ValueText(L"P2SerialNo.", event.P2SerialNo);
        ValueText(L"ClipName", event.ClipName);
        ValueText(L"GlobalClipID", identifier);
        Number(L"Offset", event.SourceOffset);
        Text(L"InTimecode", media::TimecodeText(event.SourceOffset, m_rate));
        Text(L"OutTimecode", media::TimecodeText(last, m_rate));
        Close();
        Close();
    }

    /// A text that readers take, who refuse a list with too much of it.
    void ValueText(const wchar_t* name, const CString& value) {
        m_text += platform::Utf8FromText(value.View()).size();
        Require(m_text <= kMaxText);
        if (IsSound()) {
            Text(name, value);
        }
    }

    const tag_P2EDL& m_edl;
    const Reference& m_reference;
    int m_rate;
    std::size_t m_text = 0; ///< bytes
};

/// The name with an extension; looked for with its case, so that ".XML" gains a second: kept.
CString WithExtension(const CString& name) {
    return name.Find(L".xml") < 0 ? name + L".xml" : name;
}

/// A name that a card can hold, whatever the file system on which its copy stands would take.
bool IsCardName(const CString& name) {
    constexpr std::wstring_view kUnfit = L"\"*<>?|";
    const std::wstring_view text = name.View();
    return media::IsPlainName(name) && std::none_of(text.begin(), text.end(), [&](wchar_t ch) {
               return ch < L' ' || kUnfit.find(ch) != std::wstring_view::npos;
           });
}

bool SaveNamed(const std::string& text, platform::Folder& folder, const EditListPlace& place,
               CString& saved) {
    const CString name = WithExtension(place.name);
    CString path = place.folder + name; // once the list is written, nothing may fail any more
    std::string target;
    const bool done =
        IsCardName(name) &&
        platform::FindTargetIn(folder, platform::NameBytesFromText(name.View()), target) &&
        folder.WriteWhole(target, text);
    saved = done ? std::move(path) : saved;
    return done;
}

/// The next name that neither the look into the folders nor the file system refuses.
bool GiveFreeName(platform::FileWriter& file, EditListNumbers& numbers, const CString& id,
                  const CString& folder, CString& saved) {
    constexpr int kTries = 1000;
    for (int tried = 0; tried < kTries; ++tried) {
        const std::optional<CString> next = numbers.NewName(id);
        if (!next) {
            return false;
        }
        if (!numbers.Holds(*next)) {
            CString path = folder + *next;
            const platform::IoStatus given =
                file.CommitAs(platform::NameBytesFromText(next->View()));
            if (given || given.error != platform::IoError::Exists) {
                saved = given ? std::move(path) : saved;
                return static_cast<bool>(given);
            }
        }
        numbers.Add(*next);
    }
    return false;
}

CString IdentifierOf(const tag_P2EDLClipTrackEvent& event) {
    return event.GlobalClipID.IsEmpty() ? platform::GuidText(event.GlobalClipGuid)
                                        : event.GlobalClipID;
}

bool SaveNumbered(const std::string& text, platform::Folder& folder, const EditListPlace& place,
                  const CString& id, CString& saved) {
    std::optional<EditListNumbers> numbers = EditListNumbers::Read(place.numbers);
    const std::optional<CString> first = numbers ? numbers->NewName(id) : std::nullopt;
    // An identifier may put anything into the name, as a host may.
    if (!first || !IsCardName(*first)) {
        return false;
    }
    std::unique_ptr<platform::FileWriter> file;
    return folder.Create(platform::NameBytesFromText(first->View()), file) &&
           file->WriteAt(0, text) && file->Flush() &&
           GiveFreeName(*file, *numbers, id, place.folder, saved);
}

} // namespace

bool WriteEditList(const CString& cardPath, platform::Folder& folder, const EditListPlace& place,
                   const tag_P2EDL& edl, CMarkupMSXML& reader, CString& saved) {
    const CString contents = media::ContentsFolder(cardPath);
    const auto events = static_cast<std::size_t>(edl.Events.GetSize());
    if (events == 0 || events > kMaxEvents || !platform::PathExists(PosixPath(contents))) {
        return false;
    }
    const std::optional<Reference> reference =
        FindReference(ClipFolder(contents + media::kClipFolder), edl, reader);
    if (!reference) {
        return false;
    }
    Writer writer(edl, *reference);
    const std::optional<std::string> text = writer.Write() ? writer.TextToSave() : std::nullopt;
    if (!text) {
        return false;
    }
    static_cast<void>(folder.RemoveAbandoned()); // what cannot be removed is in nobody's way
    return place.name.IsEmpty()
               ? SaveNumbered(*text, folder, place, IdentifierOf(edl.Events[0]), saved)
               : SaveNamed(*text, folder, place, saved);
}

} // namespace nqp2::edl
