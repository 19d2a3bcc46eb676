// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/rewrap/request.h"

#include "copy/failure.h"
#include "media/card_layout.h"
#include "media/rates.h"
#include "media/timecode.h"
#include "platform/unicode.h"
#include "worker/base/card_folder.h"

#include <algorithm>
#include <string_view>

namespace nqp2::worker::rewrap {
namespace {

constexpr std::int64_t kMostSounds = 16; ///< files of a part
constexpr int kLongestPath = 8192;
constexpr std::size_t kLongestText = 1024; ///< bytes
constexpr std::uint32_t kLargestAspect = 100'000;
constexpr std::int32_t kMostFramesASecond = 240;

copy::Failure OutOfBounds(const std::string& what) {
    return copy::Failure("The request for the file " + what + ".");
}

void Require(bool isRight, const char* what) {
    if (!isRight) {
        throw OutOfBounds(what);
    }
}

/// Foreign text, short enough and without what would end or break it somewhere.
std::string Harmless(const CString& text) {
    std::string bytes = Shown(text);
    std::replace_if(
        bytes.begin(), bytes.end(), [](unsigned char ch) { return ch < ' ' || ch == 0x7F; }, ' ');
    if (bytes.size() > kLongestText) {
        std::size_t size = kLongestText;
        while (size > 0 && (static_cast<unsigned char>(bytes[size]) & 0xC0U) == 0x80U) {
            --size;
        }
        bytes.resize(size);
    }
    return bytes;
}

std::string FileOf(const CString& path, const std::string& part) {
    if (path.GetLength() <= kLongestPath) {
        if (std::optional<std::string> file = FindFile(path)) {
            return *std::move(file);
        }
    }
    throw copy::Failure("There is no file " + Harmless(path) + " of " + part + ".");
}

Part PartOf(const RewrapPart& asked) {
    Part part;
    part.name = Harmless(asked.name);
    part.video = FileOf(asked.video, part.name);
    for (const CString& sound : asked.sounds) {
        part.sounds.push_back(FileOf(sound, part.name));
    }
    part.first = asked.first;
    part.frames = asked.frames;
    part.promised = asked.promised;
    return part;
}

void TakeParts(const RewrapRequest& asked, Request& request) {
    const bool isBytes = asked.join == RewrapJoin::Bytes;
    Require(!asked.parts.IsEmpty() && asked.parts.GetSize() <= kMostRewrapParts,
            "has no parts, or too many");
    const std::int64_t sounds = asked.parts[0].sounds.GetSize();
    Require(sounds <= (isBytes ? 0 : kMostSounds), "has too many files of sound");
    for (const RewrapPart& part : asked.parts) {
        Require(part.sounds.GetSize() == sounds, "has parts with more and with fewer sound files");
        Require(!isBytes || (part.first == 0 && part.frames == 0),
                "cuts parts that are one stream of bytes");
        request.parts.push_back(PartOf(part));
    }
}

/// What is marked twice has one chapter of both texts.
void TakeChapters(const CArray<RewrapChapter>& asked, Request& request) {
    Require(asked.GetSize() <= kMostRewrapChapters, "has too many chapters");
    for (const RewrapChapter& each : asked) {
        request.chapters.push_back({each.frame, Harmless(each.text)});
    }
    auto& all = request.chapters;
    std::stable_sort(all.begin(), all.end(), [](const Chapter& one, const Chapter& other) {
        return one.frame < other.frame;
    });
    std::size_t kept = 0;
    for (std::size_t i = 1; i < all.size(); ++i) {
        if (all[i].frame == all[kept].frame) {
            all[kept].text += "; " + all[i].text;
        } else if (++kept != i) {
            all[kept] = std::move(all[i]);
        }
    }
    all.resize(all.empty() ? 0 : kept + 1);
}

void TakeTarget(const CString& path, Request& request) {
    Require(path.GetLength() <= kLongestPath, "has a path that is too long");
    const std::wstring_view text = path.View();
    const std::size_t end = text.find_last_of(L"/\\");
    Require(end != std::wstring_view::npos, "does not tell the folder");
    const CString name(std::wstring(text.substr(end + 1)));
    request.folder = CString(std::wstring(text.substr(0, end + 1)));
    CheckFileName(name);
    request.file = Shown(name);
}

/// "2026-01-02T03:04:05", "...05.678Z", "...05+09:00"; without a zone it is taken for UTC.
std::string DateOf(const CString& asked) {
    constexpr std::string_view kForm = "0000-00-00T00:00:00";
    constexpr std::string_view kOffset = "+00:00";
    const auto fits = [](std::string_view text, std::string_view form) {
        return std::equal(text.begin(), text.end(), form.begin(), form.end(),
                          [](char ch, char wanted) {
                              const bool isDigit = ch >= '0' && ch <= '9';
                              return wanted == '0'   ? isDigit
                                     : wanted == '+' ? ch == '+' || ch == '-'
                                                     : ch == wanted;
                          });
    };
    const std::string text = Harmless(asked);
    if (text.empty()) {
        return text;
    }
    Require(text.size() >= kForm.size() && fits(text.substr(0, kForm.size()), kForm),
            "has a date that is none");
    std::string_view zone = std::string_view(text).substr(kForm.size());
    if (zone.starts_with('.')) {
        zone.remove_prefix(std::min(zone.find_first_not_of("0123456789", 1), zone.size()));
    }
    Require(zone.empty() || zone == "Z" || fits(zone, kOffset), "has a date that is none");
    return text.substr(0, kForm.size()) + (zone.empty() ? "Z" : std::string(zone));
}

void TakePicture(const RewrapRequest& asked, Request& request) {
    const FrameRate& rate = asked.rate;
    Require(rate.frames >= 0 && rate.seconds > 0 &&
                rate.frames / rate.seconds <= kMostFramesASecond,
            "has a rate that is none");
    Require(asked.aspectWidth <= kLargestAspect && asked.aspectHeight <= kLargestAspect &&
                (asked.aspectWidth == 0) == (asked.aspectHeight == 0),
            "has a shape of the picture that is none");
    request.codec = Harmless(asked.codec);
    request.rate = {rate.frames, rate.seconds};
    request.interlaced = asked.interlaced;
    request.aspectWidth = static_cast<std::int32_t>(asked.aspectWidth);
    request.aspectHeight = static_cast<std::int32_t>(asked.aspectHeight);
}

} // namespace

Request Checked(const RewrapRequest& asked) {
    Request request;
    Require(asked.container <= RewrapContainer::Mp4, "names a container that there is not");
    Require(asked.join <= RewrapJoin::Bytes, "names a way to join that there is not");
    TakeTarget(asked.target, request);
    request.container = asked.container;
    request.join = asked.join;
    request.oneTrack = asked.oneTrack;
    TakePicture(asked, request);
    request.timecode = Harmless(asked.timecode);
    request.title = Harmless(asked.title);
    request.reel = Harmless(asked.reel);
    request.date = DateOf(asked.date);
    TakeParts(asked, request);
    TakeChapters(asked.chapters, request);
    return request;
}

void CheckTimecode(const std::string& text, const FrameRate& rate) {
    constexpr std::size_t kLength = 11;
    constexpr std::size_t kBeforeFrames = 8;
    if (text.empty()) {
        return;
    }
    const FrameRate* const known = media::FindRate(rate, false);
    const auto read = media::ParseTimecode(platform::TextFromUtf8(text).View());
    const bool isFormed = read && text.size() == kLength && text[2] == ':' && text[5] == ':' &&
                          (text[kBeforeFrames] == ':' || text[kBeforeFrames] == ';');
    const bool isDrop = isFormed && text[kBeforeFrames] == ';';
    const std::int32_t dropped = isDrop && known != nullptr ? known->droppedNumbers : 0;
    const bool isTime = isFormed && read->hours < 24 && read->minutes < 60 && read->seconds < 60 &&
                        read->frames < rate.Nominal() && (!isDrop || dropped > 0);
    if (!isTime || (read->minutes % 10 != 0 && read->seconds == 0 && read->frames < dropped)) {
        throw OutOfBounds("has the timecode \"" + text + "\", which no frame has at this rate");
    }
}

} // namespace nqp2::worker::rewrap
