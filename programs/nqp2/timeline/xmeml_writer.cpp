// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/timeline/writers.h"
#include "nqp2/timeline/xml_document.h"

#include "NQP2ParserU/ClipTimes.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

// A Final Cut Pro 7 document: a sequence with a track for the picture and one for each channel of
// sound, or a bin of clips with such tracks of their own. Clip items that belong together name each
// other by links; a file is told where it is first used. In and out count from the file's first
// frame, at the rate of the sequence.
namespace nqp2::timeline {
namespace {

using Track = std::optional<std::size_t>; ///< of sound; none: the picture

void PutRate(XmlDocument& xml, const FrameRate& rate) {
    xml.Open("rate");
    xml.Number("timebase", rate.Nominal());
    xml.Truth("ntsc", rate.seconds != 1);
    xml.Close("rate");
}

/// What is told of the timecode of frame 0; `reel` where there is one.
void PutTimecode(XmlDocument& xml, std::int64_t frame, const FrameRate& rate, bool dropFrame,
                 std::string_view reel) {
    xml.Open("timecode");
    PutRate(xml, rate);
    xml.Text("string", BytesFromText(FrameTimecode(frame, rate, dropFrame)));
    xml.Number("frame", frame);
    xml.Text("displayformat", dropFrame ? "DF" : "NDF");
    if (!reel.empty()) {
        xml.Open("reel");
        xml.Text("name", reel);
        xml.Close("reel");
    }
    xml.Close("timecode");
}

void PutMarker(XmlDocument& xml, const Memo& memo, std::int64_t frame) {
    xml.Open("marker");
    xml.Text("name", MemoTitle(memo));
    xml.Text("comment", MemoText(memo));
    xml.Number("in", frame);
    xml.Number("out", -1); // a point
    xml.Close("marker");
}

constexpr double kMostLevel = 3.98107; // 12 dB

void PutLevel(XmlDocument& xml, double level) {
    xml.Open("filter");
    xml.Open("effect");
    xml.Text("name", "Audio Levels");
    xml.Text("effectid", "audiolevels");
    xml.Text("effectcategory", "audiolevels");
    xml.Text("effecttype", "audiolevels");
    xml.Text("mediatype", "audio");
    xml.Open("parameter");
    xml.Text("parameterid", "level");
    xml.Text("name", "Level");
    xml.Number("valuemin", 0);
    xml.Text("valuemax", fmt::format("{}", kMostLevel));
    xml.Text("value", fmt::format("{}", std::clamp(level, 0.0, kMostLevel)));
    xml.Close("parameter");
    xml.Close("effect");
    xml.Close("filter");
}

void PutLogging(XmlDocument& xml, const Event& event, const Media& media) {
    const Logging& logging = media.logging;
    xml.Open("logginginfo");
    xml.Text("description", logging.title);
    xml.Text("scene", logging.scene);
    xml.Text("shottake", logging.take);
    xml.Text("lognote", event.note);
    xml.Close("logginginfo");
    if (media.take) {
        xml.Open("comments");
        xml.Text("mastercomment1", PartText(media));
        xml.Close("comments");
    }
}

class XmemlWriter {
public:
    XmemlWriter(const Timeline& timeline, Document& document)
        : m_timeline(timeline), m_document(document), m_xml(document.Out()),
          m_told(timeline.sources->files.size()), m_tracks(timeline.SoundTracks()) {}

    void Write() {
        m_document.Out().Put("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n");
        m_xml.OpenWith("xmeml", " version=\"5\"");
        if (m_timeline.isBin) {
            PutBin();
        } else {
            PutSequence();
        }
        m_xml.Close("xmeml");
        m_document.Finish();
    }

private:
    /// An event on the frames of its sequence, or of its own clip in a bin.
    struct Placed {
        const Event& event;
        std::size_t index;
        std::int64_t start;
        std::int64_t in;
        std::int64_t duration;
        const FrameRate& rate;
    };

    [[nodiscard]] Placed InSequence(std::size_t index) const {
        const Event& event = m_timeline.events[index];
        const FrameRate& rate = m_timeline.rate;
        return {event,          index, event.start, Rescaled(event.in, event.rate, rate),
                event.duration, rate};
    }

    [[nodiscard]] Placed InItsClip(std::size_t index) const {
        const Event& event = m_timeline.events[index];
        return {event, index, 0, event.in, event.length, event.rate};
    }

    void PutSequence() {
        m_xml.OpenWith("sequence", " id=\"sequence-1\"");
        m_xml.Text("name", m_timeline.name);
        m_xml.Number("duration", m_timeline.Length());
        PutRate(m_xml, m_timeline.rate);
        PutTimecode(m_xml, m_timeline.start, m_timeline.rate, m_timeline.dropFrame, "");
        m_xml.Open("media");
        m_xml.Open("video");
        PutPictureFormat(m_timeline.raster, m_timeline.rate);
        PutTrack(std::nullopt);
        m_xml.Close("video");
        if (m_tracks > 0) {
            m_xml.Open("audio");
            m_xml.Number("numOutputChannels", static_cast<std::int64_t>(m_tracks));
            PutSoundFormat(m_timeline.MediaOf(m_timeline.events.front()).bits);
            for (std::size_t track = 0; track < m_tracks; ++track) {
                PutTrack(track);
            }
            m_xml.Close("audio");
        }
        m_xml.Close("media");
        PutMarkersOfSequence();
        m_xml.Close("sequence");
    }

    void PutMarkersOfSequence() {
        for (const Event& event : m_timeline.events) {
            for (const PlacedMemo& memo : MemosOf(m_timeline, event)) {
                PutMarker(m_xml, *memo.memo, memo.at);
                m_document.Step();
            }
        }
    }

    void PutPictureFormat(const Raster& raster, const FrameRate& rate) {
        constexpr std::int32_t kHighDefinition = 720;
        const bool isStandard = raster.lines < kHighDefinition;
        const std::string_view fields = isStandard ? "lower" : "upper";
        m_xml.Open("format");
        m_xml.Open("samplecharacteristics");
        PutRate(m_xml, rate);
        m_xml.Number("width", raster.Width());
        m_xml.Number("height", raster.lines);
        m_xml.Truth("anamorphic", isStandard && raster.isWide);
        m_xml.Text("pixelaspectratio", !isStandard           ? "square"
                                       : raster.lines == 576 ? "PAL-601"
                                                             : "NTSC-601");
        m_xml.Text("fielddominance", raster.isInterlaced ? fields : "none");
        m_xml.Close("samplecharacteristics");
        m_xml.Close("format");
    }

    void PutSoundFormat(std::int32_t bits) {
        m_xml.Open("format");
        m_xml.Open("samplecharacteristics");
        m_xml.Number("depth", bits);
        m_xml.Number("samplerate", 48000);
        m_xml.Close("samplecharacteristics");
        m_xml.Close("format");
    }

    void OpenTrack(Track track) {
        // Tracks of one channel; some systems else take two mono files for a silent pair.
        m_xml.OpenWith("track", track
                                    ? " premiereTrackType=\"Mono\" currentExplodedTrackIndex=\"0\""
                                      " totalExplodedTrackCount=\"1\""
                                    : "");
    }

    void CloseTrack(Track track) {
        m_xml.Truth("enabled", true);
        m_xml.Truth("locked", false);
        if (track) {
            m_xml.Number("outputchannelindex", static_cast<std::int64_t>(*track) + 1);
        }
        m_xml.Close("track");
    }

    void PutTrack(Track track) {
        OpenTrack(track);
        std::vector<std::int64_t> places(m_tracks, 0);
        for (std::size_t i = 0; i < m_timeline.events.size(); ++i) {
            for (std::size_t each = 0; each < m_tracks; ++each) {
                places[each] += m_timeline.events[i].OnTrack(each).IsHeard() ? 1 : 0;
            }
            if (!track || m_timeline.events[i].OnTrack(*track).IsHeard()) {
                PutItem(InSequence(i), track, static_cast<std::int64_t>(i) + 1, places);
                m_document.Step();
            }
        }
        CloseTrack(track);
    }

    void PutItem(const Placed& item, Track track, std::int64_t picturePlace,
                 const std::vector<std::int64_t>& places) {
        const Media& media = m_timeline.MediaOf(item.event);
        m_xml.OpenWith("clipitem", fmt::format(" id=\"{}\"{}", ItemId(item.index, track),
                                               track ? " premiereChannelType=\"mono\"" : ""));
        m_xml.Text("masterclipid", MasterId(item.event));
        m_xml.Text("name", media.name);
        m_xml.Truth("enabled", true);
        m_xml.Number("duration", Rescaled(media.length, media.rate, item.rate));
        PutRate(m_xml, item.rate);
        m_xml.Number("start", item.start);
        m_xml.Number("end", item.start + item.duration);
        m_xml.Number("in", item.in);
        m_xml.Number("out", item.in + item.duration);
        if (track) {
            PutSound(item.event, media, *track);
        } else {
            PutFile(m_timeline.PictureOf(media), media);
            PutLogging(m_xml, item.event, media);
            for (const PlacedMemo& memo : MemosOf(m_timeline, item.event)) {
                PutMarker(m_xml, *memo.memo, Rescaled(memo.inSource, item.event.rate, item.rate));
            }
        }
        PutLinks(item, picturePlace, places);
        m_xml.Close("clipitem");
    }

    void PutSound(const Event& event, const Media& media, std::size_t track) {
        const SoundUse use = event.OnTrack(track);
        const SoundSource& source = media.sound[static_cast<std::size_t>(use.channel)];
        PutFile(source.file, media);
        m_xml.Open("sourcetrack");
        m_xml.Text("mediatype", "audio");
        m_xml.Number("trackindex", source.channel + 1);
        m_xml.Close("sourcetrack");
        if (use.level != 1.0) {
            PutLevel(m_xml, use.level);
        }
    }

    void PutLinks(const Placed& item, std::int64_t picturePlace,
                  const std::vector<std::int64_t>& places) {
        const bool isHeard = std::any_of(item.event.sound.begin(), item.event.sound.end(),
                                         [](const SoundUse& use) { return use.IsHeard(); });
        if (!isHeard) {
            return;
        }
        PutLink(item.index, std::nullopt, picturePlace);
        for (std::size_t track = 0; track < m_tracks; ++track) {
            if (item.event.OnTrack(track).IsHeard()) {
                PutLink(item.index, track, places[track]);
            }
        }
    }

    void PutLink(std::size_t index, Track track, std::int64_t place) {
        m_xml.Open("link");
        m_xml.Text("linkclipref", ItemId(index, track));
        m_xml.Text("mediatype", track ? "audio" : "video");
        m_xml.Number("trackindex", track ? static_cast<std::int64_t>(*track) + 1 : 1);
        m_xml.Number("clipindex", place);
        if (track) {
            m_xml.Number("groupindex", 1);
        }
        m_xml.Close("link");
    }

    void PutFile(std::size_t index, const Media& media) {
        const MediaFile& file = m_timeline.sources->files[index];
        const std::string id = fmt::format(" id=\"file-{}\"", index + 1);
        if (m_told[index]) {
            m_xml.Empty("file", id);
            return;
        }
        m_told[index] = true;
        m_xml.OpenWith("file", id);
        m_xml.Text("name", file.path.empty() ? media.name : FileName(file.path));
        if (file.isThere) { // without a place it arrives as missing
            m_xml.Text("pathurl", (m_document.IsRelative() ? "" : "file://localhost") +
                                      m_document.EncodedPathOf(file));
        }
        PutRate(m_xml, media.rate);
        m_xml.Number("duration", media.length);
        PutTimecode(m_xml, media.start, media.rate, media.dropFrame, media.reel);
        m_xml.Open("media");
        if (file.hasPicture) {
            m_xml.Empty("video");
        }
        if (file.channels > 0) {
            m_xml.Open("audio");
            m_xml.Number("channelcount", file.channels);
            m_xml.Close("audio");
        }
        m_xml.Close("media");
        m_xml.Close("file");
    }

    void PutBin() {
        m_xml.Open("bin");
        m_xml.Text("name", m_timeline.name);
        m_xml.Open("children");
        for (std::size_t i = 0; i < m_timeline.events.size(); ++i) {
            PutClip(i);
            m_document.Step();
        }
        m_xml.Close("children");
        m_xml.Close("bin");
    }

    void PutClip(std::size_t index) {
        const Placed item = InItsClip(index);
        const Media& media = m_timeline.MediaOf(item.event);
        m_xml.OpenWith("clip", fmt::format(" id=\"{}\"", MasterId(item.event)));
        m_xml.Text("name", media.name);
        m_xml.Number("duration", media.length);
        PutRate(m_xml, media.rate);
        m_xml.Text("masterclipid", MasterId(item.event));
        m_xml.Truth("ismasterclip", true);
        m_xml.Open("media");
        m_xml.Open("video");
        PutPictureFormat(media.raster, media.rate);
        PutTrackOfClip(item, std::nullopt);
        m_xml.Close("video");
        if (!item.event.sound.empty()) {
            m_xml.Open("audio");
            PutSoundFormat(media.bits);
            for (std::size_t track = 0; track < item.event.sound.size(); ++track) {
                PutTrackOfClip(item, track);
            }
            m_xml.Close("audio");
        }
        m_xml.Close("media");
        PutLogging(m_xml, item.event, media);
        for (const PlacedMemo& memo : MemosOf(m_timeline, item.event)) {
            PutMarker(m_xml, *memo.memo, memo.inSource);
        }
        m_xml.Close("clip");
    }

    void PutTrackOfClip(const Placed& item, Track track) {
        OpenTrack(track);
        PutItem(item, track, 1, std::vector<std::int64_t>(m_tracks, 1));
        CloseTrack(track);
    }

    [[nodiscard]] std::string ItemId(std::size_t index, Track track) const {
        const std::size_t before = track ? *track + 1 : 0;
        return fmt::format("clipitem-{}", before * m_timeline.events.size() + index + 1);
    }

    static std::string MasterId(const Event& event) {
        return fmt::format("masterclip-{}", event.media + 1);
    }

    const Timeline& m_timeline;
    Document& m_document;
    XmlDocument m_xml;
    std::vector<bool> m_told; ///< files
    std::size_t m_tracks;     ///< of sound
};

} // namespace

void WriteXmeml(const Timeline& timeline, Document& document, Remarks& remarks) {
    for (const Event& event : timeline.events) {
        if (!timeline.isBin && !IsSame(timeline.MediaOf(event).rate, timeline.rate)) {
            remarks.Add("has clips of other rates than its own: their frames are told by its rate");
        }
        for (const SoundUse& use : event.sound) {
            if (use.IsHeard() && !(use.level >= 0 && use.level <= kMostLevel)) {
                remarks.Add(
                    "has levels of sound beyond what the form allows: the nearest are told");
            }
        }
    }
    XmemlWriter(timeline, document).Write();
}

} // namespace nqp2::timeline
