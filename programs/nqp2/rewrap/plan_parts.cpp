// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/rewrap/plan_parts.h"

#include "nqp2/rewrap/file_facts.h"
#include "nqp2/timeline/builders.h"
#include "nqp2/timeline/plain_text.h"
#include "NQP2ParserU/ClipTimes.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace nqp2::rewrap {
namespace {

using tool::Failure;

constexpr std::size_t kMostTextBytes = 1000;

std::string RateText(const FrameRate& rate) {
    return fmt::format("{:.5g}", rate.PerSecond());
}

} // namespace

void PlanParts::Add(const Stretch& stretch, const std::string& subject) {
    const Essence& essence = *stretch.essence;
    RewrapRequest& request = m_plan.request;
    if (request.parts.GetSize() == kMostRewrapParts) {
        throw Failure(m_plan.name, "has more parts than a file is made of",
                      fmt::format("{} at most", kMostRewrapParts));
    }
    if (request.parts.IsEmpty()) {
        Begin(stretch);
    } else {
        RequireAlike(essence, stretch.sounds.GetSize(), subject);
    }
    RewrapPart part;
    part.name = essence.name;
    part.video = essence.video;
    part.sounds = stretch.sounds;
    part.first = stretch.isWhole ? 0 : stretch.first;
    part.frames = stretch.isWhole ? 0 : stretch.frames;
    part.promised = essence.frames;
    request.parts.Add(std::move(part));
    AddChapters(essence, stretch.first, stretch.frames);
    m_frames += stretch.frames;
    if (!essence.remark.empty()) {
        Remark(essence.remark);
    }
}

void PlanParts::Begin(const Stretch& stretch) {
    const Essence& essence = *stretch.essence;
    RewrapRequest& request = m_plan.request;
    request.join = essence.isStream ? RewrapJoin::Bytes : RewrapJoin::Frames;
    request.oneTrack = m_options.oneTrack;
    request.codec = essence.codec;
    request.rate = essence.rate;
    request.interlaced = essence.isInterlaced;
    request.aspectWidth = essence.aspectWidth;
    request.aspectHeight = essence.aspectHeight;
    m_plan.soundTexts = essence.soundTexts;
    if (!essence.sounds.IsEmpty()) { // of which an edit may use less
        m_plan.soundTexts.resize(static_cast<std::size_t>(stretch.sounds.GetSize()),
                                 essence.soundTexts.front());
    }
    if (essence.picture) {
        m_plan.tracks.Add(*essence.picture);
    }
    for (const std::string& text : m_plan.soundTexts) {
        if (const std::optional<RewrapEssence> sound = SoundEssence(text)) {
            m_plan.tracks.Add(*sound);
        }
    }
}

void PlanParts::RequireAlike(const Essence& essence, std::int64_t sounds,
                             const std::string& subject) const {
    const RewrapRequest& request = m_plan.request;
    const RewrapPart& first = request.parts[0];
    const std::string of = BytesFromText(first.name);
    const auto require = [&](bool isSame, const char* what, const std::string& own,
                             const std::string& other) {
        if (!isSame) {
            throw Failure(subject, fmt::format("has another {} than {}", what, of),
                          fmt::format("{} and {}", own, other));
        }
    };
    require(essence.codec == request.codec, "codec", BytesFromText(essence.codec),
            BytesFromText(request.codec));
    require(timeline::IsSame(essence.rate, request.rate), "rate", RateText(essence.rate),
            RateText(request.rate));
    require(sounds == first.sounds.GetSize(), "number of sound tracks", fmt::format("{}", sounds),
            fmt::format("{}", first.sounds.GetSize()));
}

void PlanParts::AddChapters(const Essence& essence, std::uint32_t first, std::uint32_t frames) {
    CArray<RewrapChapter>& chapters = m_plan.request.chapters;
    for (const timeline::Memo& memo : essence.memos) {
        const std::int64_t inPart = memo.frame - std::int64_t{first};
        if (inPart < 0 || inPart >= frames) {
            continue;
        }
        const bool isUntold = memo.person.empty() && memo.text.empty();
        const CString text =
            isUntold && memo.frame == 0 ? essence.name : Bounded(timeline::MemoText(memo), "memo");
        const auto frame = static_cast<std::uint32_t>(m_frames + inPart);
        // One more may come to the first frame.
        if (chapters.GetSize() < kMostRewrapChapters - 1) {
            chapters.Add({frame, text});
        } else {
            Remark(fmt::format("has more than {} memos: the others are left out",
                               kMostRewrapChapters - 1));
        }
    }
}

void PlanParts::Finish(std::int64_t start, bool dropFrame) {
    RewrapRequest& request = m_plan.request;
    request.timecode = TimecodeOf(start, dropFrame);
    request.title = Bounded(m_options.title.empty() ? m_plan.title : m_options.title, "title");
    request.reel = Bounded(m_options.reel.empty() ? m_plan.reel : m_options.reel, "reel");
    FinishChapters();
}

/// Players take what comes before the first chapter for a part of it.
void PlanParts::FinishChapters() {
    CArray<RewrapChapter>& chapters = m_plan.request.chapters;
    if (!chapters.IsEmpty() && chapters[0].frame != 0) {
        chapters.InsertAt(0, {0, m_plan.request.title});
    }
}

CString PlanParts::TimecodeOf(std::int64_t start, bool dropFrame) const {
    const FrameRate& rate = m_plan.request.rate;
    const std::string& own = m_options.timecode;
    if (own.empty()) {
        return start < 0 ? CString() : FrameTimecode(start, rate, dropFrame);
    }
    const std::size_t mark = own.find_last_of(":.;");
    const bool drops = mark != std::string::npos && own[mark] == ';';
    const std::optional<std::int64_t> frame =
        rate.frames > 0 && (!drops || rate.droppedNumbers != 0)
            ? timeline::FrameOfText(own, rate, drops)
            : std::nullopt;
    if (!frame) {
        throw Failure("--timecode " + own, "is no timecode",
                      fmt::format("expected hh:mm:ss:ff at {} frames a second", RateText(rate)),
                      tool::kUsage);
    }
    return FrameTimecode(*frame, rate, drops);
}

CString PlanParts::Bounded(const std::string& text, const char* what) const {
    if (text.size() > kMostTextBytes) {
        Remark(fmt::format("a {} is cut to {} bytes", what, kMostTextBytes));
    }
    return TextFromBytes(timeline::OneLine(timeline::CutText(text, kMostTextBytes)));
}

/// Once for each thing, however many parts it concerns.
void PlanParts::Remark(const std::string& text) const {
    std::vector<std::string>& remarks = m_plan.remarks;
    if (std::find(remarks.begin(), remarks.end(), text) == remarks.end()) {
        remarks.push_back(text);
    }
}

} // namespace nqp2::rewrap
