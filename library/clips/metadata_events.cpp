// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/metadata_events.h"

#include "media/card_layout.h"
#include "media/element_paths.h"
#include "media/metadata_paths.h"
#include "platform/number_text.h"
#include "xml/dom/quick_characters.h"

#include <algorithm>
#include <utility>

namespace nqp2::clips {
namespace {

using media::MemoName;
using Role = dom::FieldSet::Role;

// What is kept of a document may take so many bytes for each of its own, the bookkeeping and the
// growth of lists included: with file and tree it stays below forty.
constexpr std::size_t kBudgetOfByte = 20;
constexpr std::size_t kLeastBudget = std::size_t{1} << 20U;
constexpr std::int64_t kMostTexts = 1'000'000;
constexpr std::int64_t kMostReused = 4096;

constexpr std::size_t kGrowth = 3; ///< a list that grows has its old place as well
constexpr std::size_t kKeptJoined = std::size_t{64} << 10U;

/// Names of files that one memo may tell.
constexpr std::size_t kMostNames = 4;

const dom::FieldSet& Members() {
    static const dom::FieldSet fields = [] {
        std::vector<dom::FieldSet::ValuePath> values;
        for (const media::MetadataPath& each : media::MetadataPaths()) {
            values.push_back({each.below});
        }
        const dom::FieldSet::ListPath memos{media::kMemoPath, media::kMemoNames};
        return dom::FieldSet(media::kClipContentPath, values, {&memos, 1});
    }();
    return fields;
}

/// About what a text takes.
std::size_t SizeOf(std::string_view text) {
    return kTextBytes + text.size() * sizeof(wchar_t);
}

bool IsField(const TextPlace* place, Role role) {
    return place != nullptr && place->field != nullptr && place->field->role == role;
}

} // namespace

MetadataEvents::MetadataEvents() : m_places(Members()) {}

void MetadataEvents::FillIn(ClipMetadata& metadata) {
    m_metadata = &metadata;
    if (metadata.others.GetSize() > kMostReused) {
        metadata.others = {};
    }
}

void MetadataEvents::Finish() {
    m_metadata->others.SetSize(m_texts);
    for (std::size_t i = 0; i < m_told.size(); ++i) {
        if (!m_told[i]) {
            media::MetadataPaths()[i].member(*m_metadata).Empty();
        }
    }
}

void MetadataEvents::Begin(std::uint64_t bytes) {
    m_told.assign(media::MetadataPaths().size(), false);
    m_metadata->memos.RemoveAll();
    m_metadata->tracks.RemoveAll();
    m_metadata->isCut = false;
    m_texts = 0;
    m_hints.clear();
    m_places.Begin();
    m_open.clear();
    m_beyond = 0;
    m_run = {};
    if (m_joined.capacity() > kKeptJoined) {
        std::exchange(m_joined, {});
    }
    m_most = kLeastBudget + static_cast<std::size_t>(bytes) * kBudgetOfByte;
    m_budget = m_most;
}

void MetadataEvents::Open(std::string_view name) {
    TakeStretch();
    if (!m_open.empty() && m_beyond == 0) {
        m_open.back().hasElements = true;
    }
    TextPlace* const place = m_beyond == 0 ? NextPlace(name, false) : nullptr;
    if (place == nullptr) {
        ++m_beyond;
        return;
    }
    m_open.push_back({place});
    if (IsField(place, Role::List)) {
        BeginMemo();
    }
}

void MetadataEvents::Attribute(std::string_view name, std::string_view value) {
    if (m_beyond > 0) {
        return;
    }
    m_open.back().hasAttributes = true;
    if (TextPlace* const place = NextPlace(name, true)) {
        Keep(*place, value);
    }
}

void MetadataEvents::Characters(std::string_view text) {
    if (m_run.empty()) {
        m_run = text;
        return;
    }
    if (m_run.data() != m_joined.data()) {
        m_joined = m_run;
    }
    m_joined += text;
    m_run = m_joined;
}

void MetadataEvents::Close() {
    if (m_beyond > 0) {
        --m_beyond;
        m_run = {};
        return;
    }
    const Opened element = m_open.back();
    if (!element.hasElements) {
        TakeLeaf(element);
    }
    TakeStretch();
    m_open.pop_back();
}

void MetadataEvents::Known(std::span<const dom::Mark> marks) {
    dom::TellMarks(marks, *this);
}

/// Null when no more is kept.
TextPlace* MetadataEvents::NextPlace(std::string_view name, bool isAttribute) {
    if (m_metadata->isCut) {
        return nullptr;
    }
    TextPlace* place = m_places.Follow(Innermost(), name, isAttribute);
    if (place == nullptr) {
        place = &m_places.Find(Innermost(), name, isAttribute);
    }
    // As if no document had come before: what is kept of one is for itself to decide.
    return Spend(place->bytes) ? place : nullptr;
}

bool MetadataEvents::Spend(std::size_t bytes) {
    m_metadata->isCut = m_metadata->isCut || bytes > m_budget;
    m_budget -= std::min(bytes, m_budget);
    return !m_metadata->isCut;
}

void MetadataEvents::BeginMemo() {
    if (Spend((sizeof(MemoMetadata) + sizeof(MemoHints)) * kGrowth)) {
        m_metadata->memos.Add(MemoMetadata());
        m_hints.emplace_back();
    }
}

/// A stretch of text beside elements; blanks there only lay the document out.
void MetadataEvents::TakeStretch() {
    const std::string_view text = std::exchange(m_run, {});
    if (m_beyond == 0 && !m_open.empty() && !dom::quick::IsBlank(text)) {
        Keep(*m_open.back().place, text);
    }
}

void MetadataEvents::TakeLeaf(const Opened& element) {
    const std::string_view text = std::exchange(m_run, {});
    TextPlace& place = *element.place;
    if (IsField(&place, Role::Value)) {
        if (Spend(SizeOf(text))) {
            const std::size_t index = place.field->index;
            place.Put(text, media::MetadataPaths()[index].member(*m_metadata));
            m_told[index] = true;
        }
    } else if (IsField(place.parent, Role::List) && !m_hints.empty()) {
        TakeMemoText(place, text);
    } else if (!text.empty() || !element.hasAttributes) {
        Keep(place, text);
    }
}

void MetadataEvents::TakeMemoText(TextPlace& place, std::string_view text) {
    MemoMetadata& memo = m_metadata->memos[m_metadata->memos.GetUpperBound()];
    MemoHints& hints = m_hints.back();
    CString value;
    if (Spend(SizeOf(text))) {
        place.Put(text, value);
    }
    switch (IsField(&place, Role::Cell) ? static_cast<MemoName>(place.field->index)
                                        : MemoName::Count) {
    case MemoName::Offset:
        memo.offset = platform::ToInt32(text);
        if (std::to_string(memo.offset) == text) {
            return;
        }
        break; // what is no such number is kept as it is
    case MemoName::Person:
        memo.person = value;
        return;
    case MemoName::Text:
        memo.text = value;
        return;
    case MemoName::VoiceFormat:
        hints.voiceFormat = value;
        [[fallthrough]];
    case MemoName::VoiceBitsPerSample:
    case MemoName::VoiceSamplingRate:
        hints.hasVoice = true;
        break;
    default:
        if (hints.names.size() < kMostNames && value.Find(L'.') >= 0 && media::IsPlainName(value)) {
            hints.names.push_back(value);
        }
    }
    Keep(place, text);
}

void MetadataEvents::Keep(TextPlace& place, std::string_view text) {
    if (m_texts == kMostTexts || !Spend(sizeof(MetadataText) * kGrowth + SizeOf(text))) {
        m_metadata->isCut = true;
        return;
    }
    if (place.pathBytes == 0) {
        m_places.MakePath(place);
    }
    if (!Spend(place.pathBytes)) {
        return;
    }
    if (m_texts == m_metadata->others.GetSize()) {
        m_metadata->others.Add(MetadataText());
    }
    MetadataText& kept = m_metadata->others[m_texts++];
    Assign(place.path, kept.path);
    place.Put(text, kept.text);
}

} // namespace nqp2::clips
