// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/timeline/writers.h"

#include "console/json_writer.h"
#include "NQP2ParserU/ClipTimes.h"
#include "NQP2ParserU/TextBytes.h"

#include <optional>
#include <utility>

// An OpenTimelineIO document: a Timeline whose Stack has a Track for the picture and one for each
// channel of sound, each with Clips and Gaps end to end. Schemas are of the versions that every
// reader of today knows. Positions of media are timecodes, those of the timeline count from 0.
namespace nqp2::timeline {
namespace {

class Json : public tool::JsonWriter {
public:
    using JsonWriter::JsonWriter;

    /// An object of a schema, on a line of its own.
    void BeginObject(std::string_view schema) {
        m_out.Put(Separator(), '\n');
        m_isFollowing = false;
        Begin(schema);
    }
    void Begin(std::string_view schema) {
        BeginRecord();
        Member("OTIO_SCHEMA", schema);
    }
    template <class Value>
    void Member(std::string_view name, const Value& value) {
        Name(name);
        Put(value);
    }
    void Null(std::string_view name) {
        Name(name);
        PutNext("null");
    }
    void EmptyList(std::string_view name) {
        Name(name);
        BeginList(tool::ListOf::Records);
        EndList();
    }
};

void PutTime(Json& json, std::string_view name, std::int64_t frames, const FrameRate& rate) {
    json.Name(name);
    json.Begin("RationalTime.1");
    json.Member("rate", rate.PerSecond());
    json.Member("value", static_cast<double>(frames));
    json.EndRecord();
}

void PutRange(Json& json, std::string_view name, std::int64_t start, std::int64_t length,
              const FrameRate& rate) {
    json.Name(name);
    json.Begin("TimeRange.1");
    PutTime(json, "duration", length, rate);
    PutTime(json, "start_time", start, rate);
    json.EndRecord();
}

/// What items, tracks and stacks have after their ranges.
void PutEffects(Json& json) {
    json.EmptyList("effects");
    json.Member("enabled", true);
}

void PutMarker(Json& json, const Memo& memo, std::int64_t frame, const FrameRate& rate) {
    json.BeginObject("Marker.2");
    json.Name("metadata");
    json.BeginRecord();
    json.Name("Resolve_OTIO");
    json.BeginRecord();
    json.Member("Note", MemoText(memo));
    json.EndRecord();
    json.EndRecord();
    json.Member("name", MemoTitle(memo));
    json.Member("color", std::string_view("GREEN"));
    PutRange(json, "marked_range", frame, 1, rate);
    json.Member("comment", MemoText(memo));
    json.EndRecord();
}

class OtioWriter {
public:
    OtioWriter(const Timeline& timeline, Document& document)
        : m_timeline(timeline), m_document(document), m_json(document.Out()) {}

    void Write() {
        m_json.Begin("Timeline.1");
        PutHeadMetadata();
        m_json.Member("name", m_timeline.name);
        PutTime(m_json, "global_start_time", m_timeline.start, m_timeline.rate);
        m_json.Name("tracks");
        m_json.BeginObject("Stack.1");
        PutStackHead();
        m_json.Name("children");
        m_json.BeginList(tool::ListOf::Records);
        PutTrack("V1", std::nullopt);
        for (std::size_t track = 0; track < m_timeline.SoundTracks(); ++track) {
            PutTrack("A" + std::to_string(track + 1), track);
        }
        m_json.EndList();
        m_json.EndRecord();
        m_json.EndRecord();
        m_document.Out().Put('\n');
        m_document.Finish();
    }

private:
    using Track = std::optional<std::size_t>; ///< of sound; none: the picture

    void PutHeadMetadata() {
        m_json.Name("metadata");
        m_json.BeginRecord();
        m_json.Name("nqp2");
        m_json.BeginRecord();
        m_json.Member("drop_frame", m_timeline.dropFrame);
        m_json.Member("bin", m_timeline.isBin);
        m_json.EndRecord();
        m_json.EndRecord();
    }

    void PutStackHead() {
        const Raster& raster = m_timeline.raster;
        m_json.Name("metadata");
        m_json.BeginRecord();
        m_json.Name("PremierePro_OTIO");
        m_json.BeginRecord();
        m_json.Name("VideoResolution");
        m_json.BeginRecord();
        m_json.Member("width", std::int64_t{raster.Width()});
        m_json.Member("height", std::int64_t{raster.lines});
        m_json.EndRecord();
        m_json.Member("VideoFrameRate", m_timeline.rate.PerSecond());
        m_json.EndRecord();
        m_json.EndRecord();
        m_json.Member("name", std::string_view("tracks"));
        m_json.Null("source_range");
        PutEffects(m_json);
        // Some readers take markers from here alone, where they count from the timeline's frame 0.
        m_json.Name("markers");
        m_json.BeginList(tool::ListOf::Records);
        for (const Event& event : m_timeline.events) {
            for (const PlacedMemo& memo : MemosOf(m_timeline, event)) {
                PutMarker(m_json, *memo.memo, memo.at, m_timeline.rate);
                m_document.Step();
            }
        }
        m_json.EndList();
    }

    void PutTrack(const std::string& name, Track track) {
        m_json.BeginObject("Track.1");
        m_json.Name("metadata");
        m_json.BeginRecord();
        if (track) {
            PutSoundOfTrack();
        }
        m_json.EndRecord();
        m_json.Member("name", name);
        m_json.Null("source_range");
        PutEffects(m_json);
        m_json.EmptyList("markers");
        m_json.Member("kind", std::string_view(track ? "Audio" : "Video"));
        m_json.Name("children");
        m_json.BeginList(tool::ListOf::Records);
        PutItems(track);
        m_json.EndList();
        m_json.EndRecord();
    }

    void PutSoundOfTrack() {
        m_json.Name("Resolve_OTIO");
        m_json.BeginRecord();
        m_json.Member("Audio Type", std::string_view("Mono"));
        m_json.EndRecord();
        m_json.Name("PremierePro_OTIO");
        m_json.BeginRecord();
        m_json.Name("AudioChannels");
        m_json.BeginRecord();
        m_json.Member("ChannelType", std::string_view("Mono"));
        m_json.Member("NumberOfChannels", std::int64_t{1});
        m_json.EndRecord();
        m_json.EndRecord();
    }

    void PutItems(Track track) {
        std::int64_t end = 0;
        for (std::size_t i = 0; i < m_timeline.events.size(); ++i) {
            const Event& event = m_timeline.events[i];
            if (event.start > end) {
                PutGap(event.start - end, m_timeline.rate);
            }
            end = event.End();
            if (track && !event.OnTrack(*track).IsHeard()) {
                PutGap(event.length, event.rate);
            } else {
                PutClip(i, track);
            }
            m_document.Step();
        }
    }

    void PutGap(std::int64_t length, const FrameRate& rate) {
        m_json.BeginObject("Gap.1");
        PutNoMetadata();
        m_json.Member("name", std::string_view(""));
        PutRange(m_json, "source_range", 0, length, rate);
        PutEffects(m_json);
        m_json.EmptyList("markers");
        m_json.EndRecord();
    }

    void PutClip(std::size_t index, Track track) {
        const Event& event = m_timeline.events[index];
        const Media& media = m_timeline.MediaOf(event);
        m_json.BeginObject("Clip.2");
        PutClipMetadata(index, track);
        m_json.Member("name", media.name);
        const std::int64_t first = Rescaled(media.start, media.rate, event.rate);
        PutRange(m_json, "source_range", first + event.in, event.length, event.rate);
        PutEffects(m_json);
        m_json.Name("markers");
        m_json.BeginList(tool::ListOf::Records);
        if (!track) {
            for (const PlacedMemo& memo : MemosOf(m_timeline, event)) {
                PutMarker(m_json, *memo.memo, first + memo.inSource, event.rate);
            }
        }
        m_json.EndList();
        PutReferences(event, media, track);
        m_json.EndRecord();
    }

    void PutReferences(const Event& event, const Media& media, Track track) {
        const bool showsProxy = !track && m_timeline.showsProxies && media.proxy.has_value();
        m_json.Name("media_references");
        m_json.BeginRecord();
        if (track) {
            const auto channel = static_cast<std::size_t>(event.OnTrack(*track).channel);
            PutReference("DEFAULT_MEDIA", media, media.sound[channel].file);
        } else {
            PutReference("DEFAULT_MEDIA", media, media.picture);
            if (media.proxy) {
                PutReference("PROXY", media, *media.proxy);
            }
        }
        m_json.EndRecord();
        m_json.Member("active_media_reference_key",
                      std::string_view(showsProxy ? "PROXY" : "DEFAULT_MEDIA"));
    }

    void PutReference(std::string_view key, const Media& media, std::size_t index) {
        const MediaFile& file = m_timeline.sources->files[index];
        m_json.Name(key);
        m_json.BeginObject(file.isThere ? "ExternalReference.1" : "MissingReference.1");
        PutNoMetadata();
        m_json.Member("name", std::string_view(file.isThere ? FileName(file.path) : media.name));
        PutRange(m_json, "available_range", media.start, media.length, media.rate);
        m_json.Null("available_image_bounds");
        if (file.isThere) {
            m_json.Member("target_url", (m_document.IsRelative() ? "" : "file://") +
                                            m_document.EncodedPathOf(file));
        }
        m_json.EndRecord();
    }

    void PutNoMetadata() {
        m_json.Name("metadata");
        m_json.BeginRecord();
        m_json.EndRecord();
    }

    void PutClipMetadata(std::size_t index, Track track) {
        const Event& event = m_timeline.events[index];
        const Media& media = m_timeline.MediaOf(event);
        m_json.Name("metadata");
        m_json.BeginRecord();
        m_json.Name("nqp2");
        m_json.BeginRecord();
        PutOwn(event, media, track);
        m_json.EndRecord();
        PutResolve(index, track);
        PutPremiere(index, track);
        m_json.EndRecord();
    }

    void PutOwn(const Event& event, const Media& media, Track track) {
        m_json.Member("clip", media.name);
        m_json.Member("identifier", media.identifier);
        m_json.Member("serial_no", event.serialNo);
        m_json.Member("reel", media.reel);
        m_json.Member("timecode", media.timecode);
        m_json.Member("drop_frame", media.dropFrame);
        m_json.Member("missing", !media.isThere);
        if (track) {
            const SoundUse use = event.OnTrack(*track);
            m_json.Member("channel", std::int64_t{use.channel} + 1);
            m_json.Member("level", use.level);
            return;
        }
        m_json.Member("title", media.logging.title);
        m_json.Member("date", media.logging.date);
        m_json.Member("scene", media.logging.scene);
        m_json.Member("take", media.logging.take);
        m_json.Member("camera", media.logging.camera);
        m_json.Member("note", event.note);
        if (media.take) {
            m_json.Name("recording");
            m_json.BeginRecord();
            m_json.Member("top_identifier", media.take->topIdentifier);
            m_json.Member("number", media.take->number);
            m_json.Member("count", media.take->count);
            m_json.Member("offset", media.take->offset);
            m_json.EndRecord();
        }
    }

    /// What editing systems know of each other's documents: which items belong together and which
    /// channel is heard.
    void PutResolve(std::size_t index, Track track) {
        m_json.Name("Resolve_OTIO");
        m_json.BeginRecord();
        m_json.Member("Link Group ID", static_cast<std::int64_t>(index) + 1);
        if (track) {
            m_json.Name("Channels");
            m_json.BeginList(tool::ListOf::Records);
            m_json.BeginRecord();
            m_json.Member("Source Channel ID", std::int64_t{ChannelOf(index, *track)});
            m_json.Member("Source Track ID", std::int64_t{0});
            m_json.EndRecord();
            m_json.EndList();
        }
        m_json.EndRecord();
    }

    void PutPremiere(std::size_t index, Track track) {
        m_json.Name("PremierePro_OTIO");
        m_json.BeginRecord();
        m_json.Member("LinkID", std::to_string(index + 1));
        if (track) {
            m_json.Name("AudioChannels");
            m_json.BeginRecord();
            m_json.Member("ChannelType", std::string_view("Mono"));
            m_json.Name("SecondaryAssignments");
            m_json.BeginList(tool::ListOf::Records);
            m_json.BeginRecord();
            m_json.Member("SecondaryChannelIndex", std::int64_t{ChannelOf(index, *track)});
            m_json.EndRecord();
            m_json.EndList();
            m_json.EndRecord();
        }
        m_json.EndRecord();
    }

    /// Within the file, from 0.
    [[nodiscard]] int ChannelOf(std::size_t index, std::size_t track) const {
        const Event& event = m_timeline.events[index];
        const auto channel = static_cast<std::size_t>(event.OnTrack(track).channel);
        return m_timeline.MediaOf(event).sound[channel].channel;
    }

    const Timeline& m_timeline;
    Document& m_document;
    Json m_json;
};

} // namespace

void WriteOtio(const Timeline& timeline, Document& document, Remarks& remarks) {
    for (const Event& event : timeline.events) {
        for (const SoundUse& use : event.sound) {
            if (use.IsHeard() && use.level != 1.0) {
                remarks.Add("OpenTimelineIO has no levels of sound: they are in the metadata");
            }
        }
    }
    OtioWriter(timeline, document).Write();
}

} // namespace nqp2::timeline
