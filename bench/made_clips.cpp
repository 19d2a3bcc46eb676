// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bench/made_clips.h"

#include "catalogue/words.h"

#include <fmt/core.h>

namespace nqp2::bench {
namespace {

using catalogue::CardClip;
using catalogue::ClipRecord;

constexpr const char* kSyllables[] = {"ba", "le",  "mo", "ri",  "ta", "ken", "sul", "vor",
                                      "ni", "das", "po", "gra", "el", "hin", "ost", "fu"};

CardClip MadeClip(Language& language, std::int64_t number) {
    CardClip made;
    ClipRecord& clip = made.clip;
    clip.identity = fmt::format("060A2B340101010501010D4313000000{:032X}", number * 2654435761);
    clip.name = fmt::format("{:04}{:02X}", number % 10'000, number % 251);
    clip.title = language.Words(3);
    clip.start = fmt::format("20{:02}-{:02}-{:02}T{:02}:{:02}:00+02:00", 5 + language.Below(20),
                             1 + language.Below(12), 1 + language.Below(28), language.Below(24),
                             language.Below(60));
    clip.frames = 250;
    clip.milliseconds = 10'000;
    clip.rate = number % 3 == 0 ? "59.94i" : "50i";
    clip.codec = number % 5 == 0 ? "DV100_1080/50i" : "AVC-I_1080/50i";
    clip.timecode = "10:00:00:00";
    clip.manufacturer = "Works";
    clip.camera = fmt::format("CAM-{}", language.Below(40));
    clip.cameraSerial = fmt::format("S{:08}", language.Below(400));
    clip.programme = language.Words(2);
    clip.scene = std::to_string(language.Below(200));
    clip.take = "1";
    clip.place = language.Words(2);
    clip.people = language.Words(2) + "\n" + language.Words(2);
    clip.memos = number % 4 == 0 ? language.Words(12) : "";
    clip.words = WordsOfClip(clip);
    made.holding.name = clip.name;
    made.holding.stamp = "0123456789abcdef";
    made.holding.identifier = clip.identity;
    made.holding.bytes = 1'000'000'000;
    made.holding.isIngested = number % 2;
    return made;
}

} // namespace

std::string Language::Words(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += text.empty() ? "" : " ";
        text += Word();
    }
    return text;
}

std::string Language::Word() {
    auto number = static_cast<std::uint64_t>(20'000 / (1 + 19'999 * m_share(m_random)));
    std::string word;
    for (number += 16; number > 0; number /= 16) {
        word += kSyllables[number % 16];
    }
    return word;
}

catalogue::CardContents MadeCard(Language& language, std::int64_t number, std::int64_t clips) {
    catalogue::CardContents contents;
    contents.card.mediumKey = fmt::format("volume {:04X}-{:04X}", number, number);
    contents.card.kind = "p2";
    contents.card.label = fmt::format("Shelf {}", number);
    contents.card.clips = clips;
    for (std::int64_t clip = 0; clip < clips; ++clip) {
        contents.read.push_back(MadeClip(language, number * clips + clip));
    }
    return contents;
}

} // namespace nqp2::bench
