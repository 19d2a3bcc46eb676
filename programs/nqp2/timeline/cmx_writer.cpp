// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/timeline/plain_text.h"
#include "nqp2/timeline/writers.h"

#include "NQP2ParserU/ClipTimes.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

// A CMX 3600 list: a line for each event with reel, channels, source in and out, record in and out,
// and below it lines for people and for programs that know them. All at one rate, which no line
// tells; ";" before the frames says drop frame.
namespace nqp2::timeline {
namespace {

constexpr std::size_t kTitle = 70;
constexpr std::size_t kText = 200;

/// What of the sound a line can say.
struct Channels {
    std::string_view name;
    std::string_view more; ///< a line of its own
};
constexpr Channels kPictureAlone = {"V", ""};
/// By their number, where each output has the channel of its own number.
constexpr Channels kWithSound[] = {
    kPictureAlone, {"B", ""}, {"AA/V", ""}, {"AA/V", "AUD  3"}, {"AA/V", "AUD  3  4"}};

/// How many channels every event has, each on the output of its own number; 0 when it is not so.
std::size_t PlainChannels(const Timeline& timeline) {
    const std::size_t tracks = timeline.SoundTracks();
    const bool isPlain =
        std::all_of(timeline.events.begin(), timeline.events.end(), [tracks](const Event& event) {
            for (std::size_t track = 0; track < tracks; ++track) {
                if (event.OnTrack(track).channel != static_cast<std::int32_t>(track)) {
                    return false;
                }
            }
            return true;
        });
    return isPlain && tracks < std::size(kWithSound) ? tracks : 0;
}

class CmxWriter {
public:
    CmxWriter(const Timeline& timeline, Document& document)
        : m_timeline(timeline), m_document(document),
          m_channels(kWithSound[PlainChannels(timeline)]) {}

    void Write() {
        PutLine("TITLE: {}", Ascii(m_timeline.name, kTitle));
        PutLine("FCM: {}DROP FRAME", m_timeline.dropFrame ? "" : "NON-");
        PutLine("");
        for (std::size_t i = 0; i < m_timeline.events.size(); ++i) {
            PutEvent(i + 1, m_timeline.events[i]);
            m_document.Step();
        }
        m_document.Finish();
    }

private:
    template <class... Parts>
    void PutLine(fmt::format_string<const Parts&...> form, const Parts&... parts) {
        m_document.Out().Put(fmt::format(form, parts...), "\r\n");
    }

    [[nodiscard]] std::string SourceTime(const Media& media, std::int64_t frame) const {
        return BytesFromText(FrameTimecode(media.start + frame, m_timeline.rate, media.dropFrame));
    }
    [[nodiscard]] std::string RecordTime(std::int64_t frame) const {
        return BytesFromText(
            FrameTimecode(m_timeline.start + frame, m_timeline.rate, m_timeline.dropFrame));
    }

    void PutEvent(std::size_t number, const Event& event) {
        const Media& media = m_timeline.MediaOf(event);
        const MediaFile& picture = m_timeline.sources->files[m_timeline.PictureOf(media)];
        PutLine("{:03}  {:<8} {:<5} C        {} {} {} {}", number, media.reel, m_channels.name,
                SourceTime(media, event.in), SourceTime(media, event.in + event.length),
                RecordTime(event.start), RecordTime(event.End()));
        if (!m_channels.more.empty()) {
            PutLine("{}", m_channels.more);
        }
        const std::string name = Ascii(media.name, kText);
        PutLine("* FROM CLIP NAME: {}", name);
        if (picture.isThere) {
            PutLine("* SOURCE FILE: {}", Ascii(FileName(picture.path), kText));
        }
        if (media.reel != name) {
            PutLine("* COMMENT: REEL {} IS {}", media.reel, name);
        }
        if (!media.isThere) {
            PutLine("* COMMENT: CLIP IS NOT ON THE CARD");
        }
        if (media.take) {
            PutLine("* COMMENT: {}", PartText(media));
        }
        if (!event.note.empty()) {
            PutLine("* COMMENT: {}", Ascii(event.note, kText));
        }
        for (const PlacedMemo& memo : MemosOf(m_timeline, event)) {
            PutLine("* LOC: {} GREEN   {}", RecordTime(memo.at),
                    Ascii(MemoText(*memo.memo), kText));
        }
    }

    const Timeline& m_timeline;
    Document& m_document;
    const Channels& m_channels;
};

/// Whether a text loses something on its way into a line.
bool IsChanged(const std::string& text, std::size_t most) {
    return Ascii(text, most) != text;
}

void TellLosses(const Timeline& timeline, Remarks& remarks) {
    bool isChanged = IsChanged(timeline.name, kTitle);
    for (const Event& event : timeline.events) {
        isChanged = isChanged || IsChanged(timeline.MediaOf(event).name, kText) ||
                    IsChanged(event.note, kText);
        for (const PlacedMemo& memo : MemosOf(timeline, event)) {
            isChanged = isChanged || IsChanged(MemoText(*memo.memo), kText);
        }
        for (const SoundUse& use : event.sound) {
            if (use.IsHeard() && use.level != 1.0) {
                remarks.Add("an EDL has no levels of sound: left out");
            }
        }
    }
    if (isChanged) {
        remarks.Add("texts that an EDL cannot hold are changed: ASCII, one line, not too long");
    }
    if (timeline.SoundTracks() > 0 && PlainChannels(timeline) == 0) {
        remarks.Add("an EDL cannot tell which channel goes where: the picture alone");
    }
}

} // namespace

void WriteCmx(const Timeline& timeline, Document& document, Remarks& remarks) {
    TellLosses(timeline, remarks);
    CmxWriter(timeline, document).Write();
}

} // namespace nqp2::timeline
