// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "edl/edl_writer.h"

#include "edl/edl_layout.h"
#include "media/card_layout.h"
#include "media/element_paths.h"
#include "media/families.h"
#include "media/identifier.h"
#include "media/timecode.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "platform/guard.h"
#include "platform/guid_text.h"
#include "platform/unicode.h"
#include "xml/dom/document.h"
#include "xml/metadata_writer.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace nqp2::edl {
namespace {

using media::ClassReader;
using media::ClipPath;
using platform::IoStatus;

/// What the edit is made of, told by a source clip on the card.
struct Reference {
    CString editUnit;
    CString frameRate;
    CString codec;
    bool class50 = false;
};

CString TextAt(CMarkupMSXML& reader, ClipPath path) {
    constexpr int kIgnoreMissing = 1; // which is nothing to log
    return reader.GetNodeText(media::FullPathText(path), kIgnoreMissing);
}

Reference ReadReference(CMarkupMSXML& reader) {
    Reference reference;
    reference.editUnit = TextAt(reader, ClipPath::EditUnit);
    reference.frameRate = TextAt(reader, ClipPath::FrameRate);
    reference.codec = TextAt(reader, ClipPath::Codec);
    reference.class50 =
        media::LooksAtClass(ClassReader::EditList, reference.codec.View()) &&
        reader.GetNodeAttribute(media::FullPathText(ClipPath::Codec), L"Class") == media::kClass50;
    return reference;
}

/// The first event's clip that is on the card and carries the event's identifier. A failure when
/// there is none, and when a clip file that is there does not load.
IoStatus FindReference(const platform::Place& clips, const tag_P2EDL& edl, CMarkupMSXML& reader,
                       Reference& reference) {
    const platform::MemoryWatch watch;
    platform::FoundFile file;
    for (const tag_P2EDLClipTrackEvent& event : edl.Events) {
        if (!media::IsPlainName(event.ClipName) ||
            !clips.Find(media::FileNameOf(media::kMetadataFiles, event.ClipName), file) ||
            file.isFolder) {
            continue;
        }
        if (reader.LoadXml(file.path) == 0) {
            return Refusal("the metadata of clip " + platform::Utf8FromText(event.ClipName.View()) +
                           " cannot be read");
        }
        const GUID clip = media::GuidFromIdentifier(TextAt(reader, ClipPath::GlobalClipID));
        if (clip == media::GuidFromIdentifier(event.GlobalClipID)) {
            reference = ReadReference(reader);
            watch.Require();
            return reference.codec.IsEmpty()
                       ? Refusal("the metadata of clip " +
                                 platform::Utf8FromText(event.ClipName.View()) + " name no codec")
                       : IoStatus();
        }
    }
    return Refusal("no event's ClipName and GlobalClipID are those of a clip on the card");
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

    [[nodiscard]] bool HoldsTooMuch() const { return m_text > kMaxText; }
    std::optional<std::string> TextToSave() { return Builder().GetDocumentPtr()->TextToSave(); }

private:
    void WriteHead() {
        Number(L"Duration", m_edl.Duration);
        ValueText(L"EditUnit", m_reference.editUnit);
        ValueText(L"StartTimecode", L"00:00:00:00");
        ValueText(L"FrameRate", m_reference.frameRate);
        // One codec alone carries its class, though four are asked for it: kept.
        const bool carriesClass = media::LooksAtClass(ClassReader::First, m_reference.codec.View());
        Text(L"Codec", m_reference.codec, carriesClass ? L"Class" : L"",
             m_reference.class50 ? media::kClass50 : L"100");
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

    /// A text that readers take, which refuse a list with too much of it.
    void ValueText(const wchar_t* name, const CString& value) {
        m_text += platform::Utf8FromText(value.View()).size();
        Require(!HoldsTooMuch());
        if (IsSound()) {
            Text(name, value);
        }
    }

    const tag_P2EDL& m_edl;
    const Reference& m_reference;
    int m_rate;
    std::size_t m_text = 0; ///< bytes
};

IoStatus TextOf(const tag_P2EDL& edl, const Reference& reference, std::string& text) {
    Writer writer(edl, reference);
    if (!writer.Write()) {
        return Refusal(writer.HoldsTooMuch() ? "the edit list holds more text than readers take"
                                             : "an event's identifier is none");
    }
    std::optional<std::string> built = writer.TextToSave();
    if (!built) {
        return Refusal("the edit list holds characters that XML cannot hold");
    }
    text = std::move(*built);
    return {};
}

} // namespace

IoStatus EditListText(const platform::Place& contents, const tag_P2EDL& edl, CMarkupMSXML& reader,
                      std::string& text) {
    const auto events = static_cast<std::size_t>(edl.Events.GetSize());
    if (events == 0) {
        return Refusal("the edit list has no events");
    }
    if (events > kMaxEvents) {
        return Refusal("the edit list has more than " + std::to_string(kMaxEvents) + " events");
    }
    if (IoStatus status = contents.Look(); !status) {
        status.reason = "the card's CONTENTS folder: " + status.reason;
        return status;
    }
    Reference reference;
    IoStatus status =
        FindReference(contents.Below(media::kMetadataFiles.folder.Path()), edl, reader, reference);
    return status ? TextOf(edl, reference, text) : status;
}

} // namespace nqp2::edl
