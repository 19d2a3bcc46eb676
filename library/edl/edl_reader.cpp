// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "edl/edl_reader.h"

#include "edl/edl_layout.h"
#include "edl/number_words.h"
#include "media/element_paths.h"
#include "media/families.h"
#include "media/identifier.h"
#include "media/timecode.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "platform/case_fold.h"
#include "platform/number_text.h"
#include "platform/unicode.h"
#include "xml/document_queries.h"
#include "xml/dom/document.h"
#include "xml/dom/path_walk.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace nqp2::edl {
namespace {

using media::ClassReader;
using media::EditPath;
using media::EventPath;
using platform::ToInt32;

/// What the events of a list tell again and again, such as one card's serial number, is converted
/// once and shared by their records.
class RepeatedTexts {
public:
    explicit RepeatedTexts(xml::TextBudget& budget) : m_budget(budget) {}

    CString TextOf(EventPath path, const dom::Node& node) {
        std::string scratch;
        const std::string_view utf8 = dom::Text(node, scratch);
        m_budget.Spend(utf8.size());
        if (!scratch.empty()) {
            return platform::TextFromUtf8(utf8); // the bytes are gone with this call
        }
        Last& last = m_last[static_cast<std::size_t>(path)];
        if (last.utf8 != utf8) {
            last = {utf8, platform::TextFromUtf8(utf8)};
        }
        return last.text;
    }
    const GUID& GuidOf(const CString& identifier) {
        if (!(m_identifier == identifier)) {
            m_identifier = identifier;
            m_guid = media::GuidFromIdentifier(identifier);
        }
        return m_guid;
    }

private:
    struct Last {
        std::string_view utf8; ///< in the document
        CString text;
    };

    xml::TextBudget& m_budget;
    std::array<Last, media::kEventPathCount> m_last;
    CString m_identifier;
    GUID m_guid;
};

constexpr std::pair<EventPath, NumberForm> kNumbers[] = {
    {EventPath::Offset, NumberForm::Whole},        {EventPath::Duration, NumberForm::Whole},
    {EventPath::SourceOffset, NumberForm::Whole},  {EventPath::Channel, NumberForm::WholeEach},
    {EventPath::AudioInOffset, NumberForm::Whole}, {EventPath::AudioOutOffset, NumberForm::Whole},
    {EventPath::AudioLevel, NumberForm::RealEach},
};

/// The texts of one event; of none at all when there is no node.
class EventTexts {
public:
    EventTexts(const dom::Node* event, RepeatedTexts& repeated) : m_repeated(repeated) {
        static const dom::PathSet paths(media::kEventPaths);
        if (event != nullptr) {
            paths.Find(*event, m_nodes);
        }
    }
    [[nodiscard]] CString operator[](EventPath path) const {
        const dom::Node* const node = m_nodes[static_cast<std::size_t>(path)];
        return node != nullptr ? m_repeated.TextOf(path, *node) : CString();
    }
    [[nodiscard]] std::int32_t Number(EventPath path) const { return NumberOr(path, 0); }
    /// The default is for a missing element and for one without text.
    [[nodiscard]] std::int32_t NumberOr(EventPath path, std::int32_t absent) const {
        const dom::Node* const node = m_nodes[static_cast<std::size_t>(path)];
        std::string scratch;
        const std::string_view text =
            node != nullptr ? dom::Text(*node, scratch) : std::string_view();
        return text.empty() ? absent : ToInt32(text);
    }
    /// The first element that is no number where one is wanted, as it stands; "" for none.
    [[nodiscard]] CString Doubt() const {
        constexpr std::size_t kMostShown = 80; // bytes
        for (const auto& [path, form] : kNumbers) {
            const dom::Node* const node = m_nodes[static_cast<std::size_t>(path)];
            std::string scratch;
            const std::string_view text =
                node != nullptr ? dom::Text(*node, scratch) : std::string_view();
            if (!IsNumeric(text, form)) {
                return platform::TextFromUtf8(
                    std::string(media::kEventPaths[static_cast<std::size_t>(path)]) + " \"" +
                    std::string(text.substr(0, kMostShown)) + '"');
            }
        }
        return {};
    }

private:
    RepeatedTexts& m_repeated;
    std::array<dom::Node*, media::kEventPathCount> m_nodes{};
};

/// Up to kWords words separated by blanks, each handed to `take` with its index.
template <class Take>
void ForEachWord(const CString& text, Take take) {
    std::wstring_view left = text.View();
    for (int i = 0; i < kWords; ++i) {
        left.remove_prefix(std::min(left.find_first_not_of(L' '), left.size()));
        if (left.empty()) {
            return;
        }
        const std::wstring_view word = left.substr(0, left.find(L' '));
        take(i, word);
        left.remove_prefix(word.size());
    }
}

/// The sum of source position and length less one, without leaving 32 bits.
std::int32_t LastFrame(std::int32_t offset, std::int32_t duration) {
    using Limits = std::numeric_limits<std::int32_t>;
    const std::int64_t last = std::int64_t{offset} + duration - 1;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(last, Limits::min(), Limits::max()));
}

void ReadEvent(const EventTexts& texts, RepeatedTexts& repeated, tag_P2EDLClipTrackEvent& event) {
    event.Offset = texts.Number(EventPath::Offset);
    event.Duration = texts.Number(EventPath::Duration);
    event.P2SerialNo = texts[EventPath::SerialNo];
    event.ClipName = texts[EventPath::ClipName];
    event.GlobalClipID = texts[EventPath::GlobalClipID];
    event.GlobalClipGuid = repeated.GuidOf(event.GlobalClipID);
    event.SourceOffset = texts.Number(EventPath::SourceOffset);
    event.SourceIn = event.SourceOffset;
    event.SourceOut = LastFrame(event.SourceOffset, event.Duration);
    ForEachWord(texts[EventPath::Channel],
                [&](int index, std::wstring_view word) { event.Channels[index] = ToInt32(word); });
    event.AudioInOffset = texts.NumberOr(EventPath::AudioInOffset, event.AudioInOffset);
    event.AudioOutOffset = texts.NumberOr(EventPath::AudioOutOffset, event.AudioOutOffset);
    ForEachWord(texts[EventPath::AudioLevel], [&](int index, std::wstring_view word) {
        const double level = platform::ToDouble(word);
        event.AudioLevels[index] = std::isfinite(level) ? level : 0.0;
    });
    event.Note = texts[EventPath::Note];
}

/// Splits the text at its first "/". False for a unit that cannot be one.
bool ReadEditUnit(const CString& text, tag_P2EDL::Fraction& unit) {
    const int slash = text.Find(L'/');
    if (slash < 0) {
        return true;
    }
    unit.Numerator = ToInt32(text.Left(slash).View());
    unit.Denominator = ToInt32(text.Mid(slash + 1).View());
    return unit.Numerator >= 1 && unit.Denominator > 0;
}

/// The texts that are there once in a list.
class HeadTexts {
public:
    HeadTexts(const dom::Document& document, xml::TextBudget& budget) : m_budget(budget) {
        static const dom::PathSet paths(media::kEditPaths);
        paths.FindBehind(media::kEditContentPath, document.Content()->DocumentNode(), m_nodes);
    }
    [[nodiscard]] CString operator[](EditPath path) const {
        std::string scratch;
        const std::string_view utf8 = Utf8(path, scratch);
        m_budget.Spend(utf8.size());
        return platform::TextFromUtf8(utf8);
    }
    [[nodiscard]] std::int32_t Number(EditPath path) const {
        std::string scratch;
        return ToInt32(Utf8(path, scratch));
    }

private:
    [[nodiscard]] std::string_view Utf8(EditPath path, std::string& scratch) const {
        const dom::Node* const node = m_nodes[static_cast<std::size_t>(path)];
        return node != nullptr ? dom::Text(*node, scratch) : std::string_view();
    }

    xml::TextBudget& m_budget;
    std::array<dom::Node*, media::kEditPathCount> m_nodes{};
};

void ReadCodec(CMarkupMSXML& reader, const HeadTexts& head, tag_P2EDL& edl) {
    edl.Codec = head[EditPath::Codec];
    const CString path = platform::TextFromUtf8(media::FullPath(EditPath::Codec));
    edl.Class50 = media::LooksAtClass(ClassReader::EditList, edl.Codec.View()) &&
                          reader.GetNodeAttribute(path, L"Class") == media::kClass50
                      ? 1
                      : 0;
}

/// Refuses what an edit list may not hold before room is made for it.
void CheckEvents(const dom::NodeList& events, const dom::Document& document) {
    if (events.Length() > kMaxEvents) {
        throw std::length_error("it has more than " + std::to_string(kMaxEvents) + " events");
    }
    xml::TextBudget budget(document);
    std::string scratch;
    for (std::size_t i = 0; i < events.Length(); ++i) {
        budget.Spend(dom::Text(*events.Item(i), scratch).size());
    }
}

/// A list without events yields one, made of nothing. Kept: hosts rely on it.
void ReadEvents(CMarkupMSXML& reader, const std::string& path, xml::TextBudget& budget,
                tag_P2EDL& edl, CArray<EventDoubt>* doubts) {
    const IXMLDOMNodeListPtr list = reader.GetDocumentPtr()->SelectNodes(path);
    CheckEvents(*list, *reader.GetDocumentPtr());
    edl.Events.SetSize(static_cast<std::int64_t>(std::max<std::size_t>(list->Length(), 1)));
    RepeatedTexts repeated(budget);
    for (std::int64_t i = 0; i < edl.Events.GetSize(); ++i) {
        const EventTexts texts(list->Next().get(), repeated);
        ReadEvent(texts, repeated, edl.Events[i]);
        if (const CString doubt = doubts != nullptr ? texts.Doubt() : CString(); !doubt.IsEmpty()) {
            doubts->Add({L"", i, doubt});
        }
    }
}

std::string EventsPath(const CString& schema) {
    const bool isThird = platform::EqualNoCase(schema.Right(4).View(), L"v3.0");
    return media::InEditContent(isThird ? media::kEventsPathOf30 : media::kEventsPath);
}

} // namespace

bool ReadEditList(CMarkupMSXML& reader, tag_P2EDL& edl, CArray<EventDoubt>* doubts) {
    xml::TextBudget budget(*reader.GetDocumentPtr(), kMaxText);
    const HeadTexts head(*reader.GetDocumentPtr(), budget);
    edl.Duration = head.Number(EditPath::Duration);
    if (!ReadEditUnit(head[EditPath::EditUnit], edl.EditUnit)) {
        return false;
    }
    edl.StartTimecode = media::EditFrameCount(head[EditPath::StartTimecode].View(),
                                              edl.EditUnit.Numerator, edl.EditUnit.Denominator);
    edl.FrameRate = head[EditPath::FrameRate];
    ReadCodec(reader, head, edl);
    edl.ThumbnailFrame = head.Number(EditPath::Thumbnail);
    const CString schema = reader.GetNodeAttribute(L"P2Main", L"");
    if (schema.Find(L"EditMetadata") < 0) {
        return false;
    }
    ReadEvents(reader, EventsPath(schema), budget, edl, doubts);
    if (edl.IconPath.IsEmpty()) {
        edl.IconPath = edl.Events[0].Clip.IconPath;
    }
    return true;
}

} // namespace nqp2::edl
