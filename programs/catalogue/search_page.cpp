// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/search_page.h"

#include "catalogue/catalogue_json.h"
#include "catalogue/catalogue_output.h"
#include "catalogue/clip_facts.h"
#include "catalogue/medium.h"
#include "catalogue/words.h"
#include "console/progress_bar.h"
#include "NQP2ParserU/CardFinder.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/WholeFile.h"
#include "page/frame.h"
#include "page/parts.h"

#include <fmt/chrono.h>
#include <fmt/core.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <map>
#include <new>
#include <set>
#include <system_error>

namespace nqp2::catalogue {
namespace {

using page::Html;
using page::Own;

constexpr const char* kToStandardOutput = "-";

constexpr page::Column kColumns[] = {
    {"Clip", "name"},    {"Start", "start"}, {"Timecode", "timecode"}, {"Length", "length"},
    {"Codec", "format"}, {"Rate", "rate"},   {"Place", "place"},       {"Memos", "notes"},
    {"On", "cards"},     {"Files", "state"},
};

constexpr page::Choice kChoices[] = {{"whole", "Whole"},
                                     {"broken", "Not whole"},
                                     {"taken", "Taken in"},
                                     {"untaken", "Not taken in"}};

/// What was asked for, as a person has asked.
constexpr struct {
    std::string SearchOptions::*value;
    Own name;
} kAsked[] = {{&SearchOptions::words, "Words"}, {&SearchOptions::from, "From"},
              {&SearchOptions::to, "To"},       {&SearchOptions::camera, "Camera"},
              {&SearchOptions::codec, "Codec"}, {&SearchOptions::rate, "Rate"},
              {&SearchOptions::state, "State"}};

constexpr struct {
    std::string ClipRecord::*value;
    Own name;
} kDetails[] = {
    {&ClipRecord::programme, "Programme"}, {&ClipRecord::scene, "Scene"},
    {&ClipRecord::take, "Take"},           {&ClipRecord::latitude, "Latitude"},
    {&ClipRecord::longitude, "Longitude"}, {&ClipRecord::manufacturer, "Manufacturer"},
    {&ClipRecord::camera, "Camera"},       {&ClipRecord::cameraSerial, "Camera's serial number"}};

bool IsTakenIn(const FoundClip& found) {
    return std::any_of(found.places.begin(), found.places.end(),
                       [](const ClipPlace& place) { return place.holding.isIngested != 0; });
}

std::string WhereText(const CardRecord& card) {
    return fmt::format("{}:{}", card.host, PathOfStored(card.place));
}

class ClipRow {
public:
    ClipRow(Html& html, const FoundClip& found) : m_html(html), m_found(found) {}

    void Put() {
        PutBeginning();
        PutName();
        page::PutStart(m_html, m_clip.start);
        m_html.ShownElement("td", "timecode number", m_clip.timecode);
        m_html.ShownElement("td", "length number", Length());
        PutCell("format", m_clip.codec);
        PutCell("rate", m_clip.rate);
        PutCell("place", m_clip.place);
        PutMemos();
        PutCards();
        PutState();
        m_html.Close("tr");
    }

private:
    void PutBeginning() {
        m_html.Open("tr").With("class", "clip").WithText("data-name", m_clip.name);
        m_html.WithText("data-start", m_clip.start).WithText("data-timecode", m_clip.timecode);
        m_html.WithNumber("data-length", m_clip.milliseconds);
        m_html.WithText("data-format", m_clip.codec).WithText("data-rate", m_clip.rate);
        m_html.WithText("data-place", m_clip.place);
        m_html.WithNumber("data-notes", static_cast<std::int64_t>(LinesOf(m_clip.memos).size()));
        m_html.WithText("data-cards",
                        m_found.places.empty() ? "" : NameOf(m_found.places.front().card));
        m_html.With("data-taken", IsTakenIn(m_found) ? Own("taken") : Own("untaken"));
        m_html.With("data-state", m_found.gaps.empty() ? Own("whole") : Own("broken"));
    }

    [[nodiscard]] std::string Length() const {
        return tool::TimeText(static_cast<double>(m_clip.milliseconds) / 1000);
    }

    void PutCell(Own cls, const std::string& text) {
        m_html.Open("td").With("class", cls).Foreign(text).Close("td");
    }

    void PutName() {
        m_html.Open("td").With("class", "name").Open("b").Foreign(m_clip.name).Close("b");
        if (!m_clip.title.empty() && m_clip.title != m_clip.name) {
            m_html.Open("span").With("class", "title").Foreign(m_clip.title).Close("span");
        }
        m_html.Open("details").Open("summary").Text("Details").Close("summary").Open("dl");
        for (const std::string& person : LinesOf(m_clip.people)) {
            page::PutDetail(m_html, "Person", person);
        }
        for (const auto& [value, name] : kDetails) {
            page::PutDetail(m_html, name, m_clip.*value);
        }
        page::PutDetail(m_html, "Identifier", IdentifierOf(m_clip));
        m_html.Close("dl").Close("details").Close("td");
    }

    void PutMemos() {
        m_html.Open("td").With("class", "notes").Open("ul");
        for (const std::string& memo : LinesOf(m_clip.memos)) {
            m_html.Open("li").Foreign(memo).Close("li");
        }
        m_html.Close("ul").Close("td");
    }

    void PutCards() {
        m_html.Open("td").With("class", "cards").Open("ul");
        for (const ClipPlace& place : m_found.places) {
            m_html.Open("li").Foreign(NameOf(place.card));
            m_html.Open("small").With("class", "where").Foreign(WhereText(place.card));
            m_html.Close("small").Close("li");
        }
        m_html.Close("ul").Close("td");
    }

    void PutState() {
        m_html.Open("td").With("class", "state");
        if (m_found.gaps.empty()) {
            m_html.Element("span", "good", Own("whole"));
        }
        for (const KnownGap& gap : m_found.gaps) {
            m_html.Open("span").With("class", "bad").Foreign(GapText(gap)).Close("span");
        }
        m_html.Element("span", "aside", IsTakenIn(m_found) ? Own("taken in") : Own("not taken in"));
        m_html.Close("td");
    }

    Html& m_html;
    const FoundClip& m_found;
    const ClipRecord& m_clip = m_found.clip;
};

void PutQuestion(Html& html, const SearchOptions& options, std::size_t found) {
    html.Open("header").With("class", "card-head").Open("h2");
    html.Shown(page::Counted(static_cast<std::int64_t>(found), "clip")).Close("h2").Open("dl");
    for (const auto& [value, name] : kAsked) {
        page::PutFact(html, name, options.*value);
    }
    if (found == static_cast<std::size_t>(options.limit)) {
        page::PutFact(html, "Limit", fmt::format("{}: there may be more", options.limit));
    }
    html.Close("dl").Close("header");
}

/// The cards that have the clips, each once.
void PutCards(Html& html, const std::vector<FoundClip>& clips) {
    std::map<std::int64_t, const CardRecord*> cards;
    for (const FoundClip& clip : clips) {
        for (const ClipPlace& place : clip.places) {
            cards.emplace(place.card.id, &place.card);
        }
    }
    for (const auto& [number, card] : cards) {
        html.Open("section").With("class", "card").Open("header").With("class", "card-head");
        html.Open("h2").Foreign(NameOf(*card)).Close("h2").Open("dl");
        page::PutFact(html, "Serial number", card->serial);
        page::PutFact(html, "Volume", card->volumeLabel);
        page::PutFact(html, "Clips", std::to_string(card->clips));
        page::PutFact(html, "Seen", DateText(card->seen));
        page::PutFact(html, "Folder", WhereText(*card));
        html.Close("dl").Close("header").Close("section");
    }
}

std::string MakeSearchPage(const SearchOptions& options, const std::vector<FoundClip>& clips) {
    std::set<std::string> starts;
    for (const FoundClip& clip : clips) {
        starts.insert(clip.clip.start);
    }
    Html html;
    page::PutHead(html, options.words.empty() ? "Catalogue" : "Catalogue: " + options.words);
    html.Open("body").Open("main").Open("h1").Text("Catalogue").Close("h1");
    page::PutTools(html, starts, kChoices, page::Look::Rows);
    html.Open("section").With("class", "card");
    PutQuestion(html, options, clips.size());
    page::OpenClips(html, "clips bare", kColumns);
    for (const FoundClip& clip : clips) {
        ClipRow(html, clip).Put();
    }
    page::CloseClips(html);
    html.Close("section");
    PutCards(html, clips);
    html.Close("main");
    page::PutFoot(html, fmt::format("{:%Y-%m-%d %H:%M}", fmt::localtime(std::time(nullptr))));
    return html.Finish();
}

/// Cards are not written to, whether they are known or not.
void RequireOffCards(const std::string& file) {
    namespace fs = std::filesystem;
    std::error_code error;
    fs::path folder = fs::weakly_canonical(fs::absolute(file).parent_path(), error);
    for (; folder.has_relative_path(); folder = folder.parent_path()) {
        CardSearch search;
        if (!FindCard(InterfaceRoot(folder.native()), search)) {
            throw std::bad_alloc();
        }
        if (std::any_of(search.cards.begin(), search.cards.end(),
                        [](const FoundCard& card) { return !card.entered; })) {
            throw tool::Failure(file, "is on the card",
                                "cards are not written to: give another folder", tool::kUsage);
        }
    }
}

} // namespace

void WriteSearchPage(tool::Console& console, const std::string& file, const SearchOptions& options,
                     const std::vector<FoundClip>& clips) {
    if (file == kToStandardOutput) {
        console.Write(MakeSearchPage(options, clips));
        return;
    }
    RequireOffCards(file);
    const std::string text = MakeSearchPage(options, clips);
    if (const std::string reason = WriteWholeFile(file, text); !reason.empty()) {
        throw tool::Failure(file, "cannot be written", reason);
    }
    console.Message(page::Counted(static_cast<std::int64_t>(clips.size()), "clip"));
}

} // namespace nqp2::catalogue
