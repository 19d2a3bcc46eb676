// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/recording_metadata.h"

#include "media/identifier.h"
#include "media/rates.h"
#include "media/timecode.h"
#include "platform/guid_text.h"
#include "platform/unicode.h"
#include "xml/dom/document.h"
#include "xml/dom/serialize.h"
#include "xml/metadata_writer.h"

namespace nqp2::worker {
namespace {

CString IdentifierOf(const GUID& guid) {
    CString identifier;
    media::IdentifierForGuidText(platform::GuidText(guid), L"", identifier);
    return identifier;
}

std::int32_t NominalOf(const RecordingFormat& format) {
    return media::ClipTimecodeRate(format.rate, false).nominal;
}

/// Of a frame, in a day.
std::int64_t NumberOf(const RecordingFormat& format, std::int64_t frames, bool dropFrame) {
    constexpr std::int64_t kDay = 24 * 60 * 60;
    const media::TimecodeRate rate = media::ClipTimecodeRate(format.rate, dropFrame);
    return media::FrameNumber(frames, rate) % (kDay * rate.nominal);
}

/// That of every second frame, where metadata number these.
std::int64_t NumberedAsOnCards(std::int64_t number, std::int32_t nominal) {
    const std::int64_t field = number % nominal;
    return nominal < media::kHalfNumberedFrom ? number : number - field + field / 2;
}

CString NumberText(const RecordingFormat& format, std::int64_t number) {
    return media::TimecodeText(number, NominalOf(format));
}

class Writer : xml::MetadataWriter {
public:
    explicit Writer(const RecordedClip& clip)
        : MetadataWriter(clip.format->type, 0), m_clip(clip) {}

    std::string Write() {
        Open(L"ClipContent");
        Text(L"ClipName", m_clip.name);
        Text(L"GlobalClipID", IdentifierOf(m_clip.identifier));
        Number(L"Duration", m_clip.frames);
        Text(L"EditUnit", EditUnit());
        WriteEssence();
        const Relations& relations = m_clip.relations;
        if (relations.top || relations.previous || relations.next) {
            WriteRelations(relations);
        }
        WriteClipMetadata();
        Close();
        if (!IsSound()) {
            throw copy::Failure("A name or title of the recording holds what XML cannot.");
        }
        return dom::Serialize(*Builder().GetDocumentPtr()->DocumentNode());
    }

private:
    [[nodiscard]] CString EditUnit() const { return media::EditUnitText(RateOf(*m_clip.format)); }

    void WriteEssence() {
        Open(L"EssenceList");
        WriteVideo();
        for (const EssenceSpan& span : m_clip.sound) {
            Open(L"Audio");
            Text(L"AudioFormat", L"MXF");
            Number(L"SamplingRate", 48000);
            Number(L"BitsPerSample", m_clip.bitsPerSample);
            WriteSpan(L"AudioIndex", span);
            Close();
        }
        Close();
    }

    void WriteVideo() {
        const RecordingFormat& format = *m_clip.format;
        const CString timecode = NumberText(
            format, NumberedAsOnCards(NumberOf(format, m_clip.startTimecode, m_clip.dropFrame),
                                      NominalOf(format)));
        Open(L"Video", L"ValidAudioFlag", L"false");
        Text(L"VideoFormat", L"MXF");
        Text(L"Codec", m_clip.codec, L"Class", format.codecClass);
        Text(L"FrameRate", format.rate, L"DropFrameFlag", m_clip.dropFrame ? L"true" : L"false");
        Text(L"StartTimecode", timecode);
        Text(L"StartBinaryGroup", L"00000000");
        Text(L"AspectRatio", m_clip.isWide ? L"16:9" : L"4:3");
        WriteSpan(L"VideoIndex", m_clip.video);
        Close();
    }

    void WriteSpan(const wchar_t* name, const EssenceSpan& span) {
        Open(name);
        Number(L"StartByteOffset", static_cast<std::int64_t>(span.start));
        Number(L"DataSize", static_cast<std::int64_t>(span.size));
        Close();
    }

    void WriteRelations(const Relations& relations) {
        Open(L"Relation");
        if (relations.offsetInShot) {
            Number(L"OffsetInShot", *relations.offsetInShot);
        }
        Open(L"Connection");
        WriteRelation(L"Top", relations.top);
        WriteRelation(L"Previous", relations.previous);
        WriteRelation(L"Next", relations.next);
        Close();
        Close();
    }

    void WriteRelation(const wchar_t* name, const std::optional<RelatedClip>& other) {
        if (other) {
            Open(name);
            Text(L"ClipName", other->name);
            Text(L"GlobalClipID", IdentifierOf(other->identifier));
            Text(L"P2SerialNo.", other->serialNo);
            Close();
        }
    }

    void WriteClipMetadata() {
        Open(L"ClipMetadata");
        Text(L"UserClipName", m_clip.userName.IsEmpty() ? m_clip.name : m_clip.userName);
        Text(L"DataSource", L"RENDERING");
        Open(L"Access");
        Text(L"CreationDate", m_clip.endDate);
        Text(L"LastUpdateDate", m_clip.endDate);
        Close();
        Open(L"Shoot");
        Text(L"StartDate", m_clip.startDate);
        Text(L"EndDate", m_clip.endDate);
        Close();
        Close();
    }

    const RecordedClip& m_clip;
};

} // namespace

bool CanDropFrames(const RecordingFormat& format) {
    return media::CanDropFrames(format.rate);
}

CString StartTimecodeText(const RecordingFormat& format, std::int64_t frames, bool dropFrame) {
    return NumberText(format, NumberOf(format, frames, dropFrame));
}

std::string MakeMetadata(const RecordedClip& clip) {
    return Writer(clip).Write();
}

} // namespace nqp2::worker
