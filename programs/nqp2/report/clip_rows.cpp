// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/report/sections.h"
#include "nqp2/report/track.h"

#include "nqp2/card.h"
#include "nqp2/clip_cells.h"
#include "nqp2/clip_table.h"
#include "NQP2ParserU/ClipTimes.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <string>
#include <vector>

namespace nqp2::report {
namespace {

constexpr std::size_t kMostMemos = 100;

/// Parts of clips' texts that make one line.
std::string Line(const std::vector<std::string>& parts) {
    std::string line;
    for (const std::string& part : parts) {
        if (!part.empty()) {
            line += (line.empty() ? "" : " \xC2\xB7 ") + part;
        }
    }
    return line;
}

std::string Words(std::initializer_list<const CString*> texts) {
    std::string words;
    for (const CString* text : texts) {
        if (!text->IsEmpty()) {
            words += words.empty() ? "" : " ";
            words += BytesFromText(*text);
        }
    }
    return words;
}

std::string SoundText(const _tag_P2Clip& clip) {
    const int channels = tool::AudioChannels(clip);
    const std::string bits = BytesFromText(clip.AudioBitsPerSample);
    return channels == 0
               ? "none"
               : Line({fmt::format("{} ch", channels), bits.empty() ? "" : bits + " bit"});
}

std::string SizeText(const _tag_P2Clip& clip) {
    return clip.ActivePixel > 0 && clip.ActiveLine > 0
               ? fmt::format("{}\xC3\x97{}", clip.ActivePixel, clip.ActiveLine)
               : "";
}

std::string LackText(const ClipFile& file) {
    static constexpr const char* kRoles[] = {"video", "audio", "metadata", "icon",
                                             "proxy", "voice", "file"};
    static constexpr const char* kStates[] = {"there", "missing", "empty", "too short"};
    const auto role = static_cast<std::size_t>(file.role);
    const auto state = static_cast<std::size_t>(file.state);
    const std::string number = file.role == ClipFileRole::Audio || file.role == ClipFileRole::Voice
                                   ? fmt::format(" {}", file.number)
                                   : "";
    return fmt::format("{}{} {}", role < std::size(kRoles) ? kRoles[role] : "file", number,
                       state < std::size(kStates) ? kStates[state] : "wrong");
}

/// How much of the clip was taken in, as a word that the page's filter knows.
Own TakenState(const ClipContents& clip) {
    const std::int64_t frames = FramesTaken(clip);
    if (clip.clip->Duration > 0 && frames >= clip.clip->Duration) {
        return "taken";
    }
    return frames > 0 ? Own("partly") : Own("untaken");
}

/// One row.
class ClipRow {
public:
    ClipRow(Html& html, const ClipContents& contents, Pictures& pictures)
        : m_html(html), m_contents(contents), m_clip(*contents.clip), m_pictures(pictures) {}

    void Put(const std::string& place) {
        PutStart(place);
        PutPicture();
        PutName();
        PutTimes();
        PutFormat();
        PutMemos();
        PutTaken();
        PutState();
        m_html.Close("tr");
    }

private:
    void PutStart(const std::string& place) {
        m_html.Open("tr").With("class", "clip").WithText("id", place);
        m_html.WithText("data-name", BytesFromText(m_clip.ClipName));
        m_html.WithText("data-start", m_contents.start);
        m_html.WithText("data-timecode", Timecode());
        m_html.WithNumber("data-length", static_cast<std::int64_t>(
                                             std::llround(1000 * tool::RunningSeconds(m_clip))));
        m_html.WithText("data-format", tool::CodecAndClass(m_clip));
        m_html.WithText("data-rate", BytesFromText(m_clip.FrameRate));
        m_html.WithNumber("data-sound", std::int64_t{tool::AudioChannels(m_clip)});
        m_html.WithNumber("data-notes", std::int64_t{m_contents.metadata.memos.GetSize()});
        m_html.WithNumber("data-frames", FramesTaken(m_contents));
        m_html.With("data-taken", TakenState(m_contents));
        m_html.With("data-state",
                    IsWhole(m_contents) && m_contents.isTakeWhole ? Own("whole") : Own("broken"));
    }

    /// Of the frame that is so far behind the first; "" where none is told.
    [[nodiscard]] std::string Timecode(std::int64_t offset = 0) const {
        return m_contents.told.startTimecode ? BytesFromText(ClipTimecode(m_clip, offset)) : "";
    }

    void PutPicture() {
        m_html.Open("td").With("class", "picture");
        const SmallPicture& picture = m_pictures.Of(m_clip);
        if (!picture.jpeg.empty()) {
            m_html.Open("img").With("alt", "").With("decoding", "async");
            m_html.WithJpeg(
                "src", {reinterpret_cast<const char*>(picture.jpeg.data()), picture.jpeg.size()});
        } else {
            m_html.Open("span").With("class", "blank");
            if (!picture.problem.IsEmpty()) {
                m_html.WithText("title", BytesFromText(picture.problem));
            }
            m_html.Text("no picture").Close("span");
        }
        m_html.Close("td");
    }

    void PutName() {
        m_html.Open("td").With("class", "name");
        m_html.Open("b").Foreign(m_clip.ClipName).Close("b");
        if (const std::string title = tool::OwnTitle(m_clip); !title.empty()) {
            m_html.Open("span").With("class", "title").Foreign(title).Close("span");
        }
        PutDetails();
        m_html.Close("td");
    }

    void PutTimes() {
        page::PutStart(m_html, m_contents.start);
        m_html.ShownElement("td", "timecode number", Timecode());
        m_html.ShownElement("td", "length number", tool::LengthText(m_clip));
    }

    void PutFormat() {
        m_html.Open("td").With("class", "format").Foreign(tool::CodecAndClass(m_clip));
        const std::string picture = Line({SizeText(m_clip), BytesFromText(m_clip.AspectRatio)});
        if (!picture.empty()) {
            m_html.Open("small").Foreign(picture).Close("small");
        }
        m_html.Close("td");
        m_html.Open("td").With("class", "rate").Foreign(m_clip.FrameRate).Close("td");
        m_html.Open("td").With("class", "sound").Foreign(SoundText(m_clip)).Close("td");
    }

    void PutMemo(const MemoMetadata& memo) {
        const std::string place = Timecode(memo.offset);
        m_html.Open("li").ShownElement(
            "span", "at", std::string_view(place.empty() ? fmt::format("{}", memo.offset) : place));
        m_html.Text(" ").Foreign(memo.text);
        if (!memo.person.IsEmpty()) {
            m_html.Open("small").Foreign(memo.person).Close("small");
        }
        if (!memo.voicePath.IsEmpty()) {
            m_html.Element("small", "voice", Own("voice memo"));
        }
        m_html.Close("li");
    }

    /// By their places in the clip, as many as are shown.
    static std::vector<const MemoMetadata*> InOrder(const CArray<MemoMetadata>& memos) {
        std::vector<const MemoMetadata*> order;
        for (const MemoMetadata& memo : memos) {
            order.push_back(&memo);
        }
        std::stable_sort(order.begin(), order.end(),
                         [](const MemoMetadata* left, const MemoMetadata* right) {
                             return left->offset < right->offset;
                         });
        order.resize(std::min(order.size(), kMostMemos));
        return order;
    }

    void PutMemos() {
        const CArray<MemoMetadata>& memos = m_contents.metadata.memos;
        m_html.Open("td").With("class", "notes");
        if (!memos.IsEmpty()) {
            m_html.Open("ul");
            for (const MemoMetadata* memo : InOrder(memos)) {
                PutMemo(*memo);
            }
            m_html.Close("ul");
        }
        const auto count = static_cast<std::size_t>(memos.GetSize());
        if (count > kMostMemos) {
            m_html.ShownElement("small", "more", fmt::format("and {} more", count - kMostMemos));
        }
        m_html.Close("td");
    }

    void PutTaken() {
        const std::int64_t duration = m_clip.Duration;
        const std::int64_t frames = FramesTaken(m_contents);
        std::vector<Block> blocks;
        for (const tag_P2SegInfo& segment : m_contents.taken) {
            blocks.push_back(
                {segment.InPoint, std::int64_t{segment.OutPoint} - segment.InPoint + 1, "piece", "",
                 "", fmt::format("frames {} to {}", segment.InPoint, segment.OutPoint), ""});
        }
        std::vector<std::int64_t> marks;
        for (const MemoMetadata& memo : m_contents.metadata.memos) {
            marks.push_back(memo.offset);
        }
        m_html.Open("td").With("class", "taken");
        PutTrack(m_html, "bar", duration, blocks, marks);
        const std::int64_t percent = duration > 0 ? frames * 100 / duration : 0;
        if (frames > 0) {
            m_html.ShownElement("small", "share", fmt::format("{} % taken in", percent));
        } else {
            m_html.Element("small", "share none",
                           m_contents.isListed ? Own("listed, no frames") : Own("not taken in"));
        }
        m_html.Close("td");
    }

    void PutState() {
        m_html.Open("td").With("class", "state");
        if (IsWhole(m_contents)) {
            m_html.Element("span", "good", Own("whole"));
        }
        for (const ClipFile& file : m_contents.lacking) {
            m_html.Open("span").With("class", IsWhole(m_contents) ? Own("aside") : Own("bad"));
            m_html.WithText("title", tool::RealPath(file.path));
            m_html.Shown(LackText(file)).Close("span");
        }
        if (!m_contents.unread.empty()) {
            m_html.Open("span").With("class", "bad").Foreign(m_contents.unread).Close("span");
        }
        if (!m_contents.isTakeWhole) {
            m_html.Element("span", "bad", Own("take incomplete"));
        }
        PutAside(m_pictures.IconProblem(m_clip), Own("icon is no picture"));
        for (const std::string& remark : m_contents.remarks) {
            m_html.Open("span").With("class", "aside").Foreign(remark).Close("span");
        }
        m_html.Close("td");
    }

    void PutAside(const CString& problem, Own words) {
        if (!problem.IsEmpty()) {
            m_html.Open("span").With("class", "aside").WithText("title", BytesFromText(problem));
            m_html.Text(words).Close("span");
        }
    }

    void PutDetail(Own name, std::initializer_list<const CString*> texts) {
        page::PutDetail(m_html, name, Words(texts));
    }

    void PutDetails() {
        const ClipMetadata& all = m_contents.metadata;
        m_html.Open("details").Open("summary").Text("Details").Close("summary").Open("dl");
        PutDetail("Programme", {&all.scenario.programName});
        PutDetail("Scene", {&all.scenario.sceneNo});
        PutDetail("Take", {&all.scenario.takeNo});
        PutDetail("Shooter", {&all.shoot.shooter});
        PutDetail("Reporter", {&all.news.reporter});
        PutDetail("Purpose", {&all.news.purpose});
        PutDetail("Object", {&all.news.object});
        PutDetail("Place", {&all.place.name});
        PutDetail("Coordinates", {&all.place.latitude, &all.place.longitude});
        PutDetail("Altitude", {&all.place.altitude});
        PutDetail("Camera", {&all.device.manufacturer, &all.device.modelName});
        PutDetail("Camera's serial number", {&all.device.serialNo});
        PutDetail("Creator", {&all.access.creator});
        PutDetail("Last change", {&all.access.lastUpdateDate, &all.access.lastUpdatePerson});
        PutDetail("Identifier", {&m_clip.GlobalClipID});
        for (const TrackMetadata& track : m_contents.metadata.tracks) {
            m_html.Open("dt").Foreign(track.kind).Close("dt");
            m_html.Open("dd")
                .Foreign(Words({&track.codec, &track.format, &track.language}))
                .Close("dd");
        }
        m_html.Close("dl").Close("details");
    }

    Html& m_html;
    const ClipContents& m_contents;
    const _tag_P2Clip& m_clip;
    Pictures& m_pictures;
};

constexpr page::Column kColumns[] = {
    {"Picture", ""},          {"Clip", "name"},     {"Start", "start"},
    {"Timecode", "timecode"}, {"Length", "length"}, {"Codec", "format"},
    {"Rate", "rate"},         {"Sound", "sound"},   {"Memos and marks", "notes"},
    {"Taken in", "frames"},   {"Files", "state"},
};

} // namespace

std::string ClipPlace(std::size_t card, std::size_t clip) {
    return fmt::format("clip-{}-{}", card + 1, clip + 1);
}

void PutClips(Html& html, const PageContents& contents, std::size_t card, Pictures& pictures) {
    const std::vector<ClipContents>& clips = contents.cards[card].clips;
    page::OpenClips(html, "clips", kColumns);
    for (std::size_t i = 0; i < clips.size(); ++i) {
        ClipRow(html, clips[i], pictures).Put(ClipPlace(card, i));
    }
    page::CloseClips(html);
}

} // namespace nqp2::report
