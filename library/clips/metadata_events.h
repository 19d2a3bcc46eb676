// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "clips/text_places.h"
#include "NQP2ParserU/ClipMetadataRecords.h"
#include "NQP2ParserU/CString.h"
#include "xml/dom/document_walk.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::clips {

/// What a memo tells of files of its own.
struct MemoHints {
    bool hasVoice = false;
    CString voiceFormat;
    std::vector<CString> names; ///< texts that could be a file's name
};

/// Takes the texts of clips' metadata documents: each to the member that is its own, all others
/// into a list. What is kept of a document is bounded by its size.
class MetadataEvents final : public dom::DocumentEvents {
public:
    MetadataEvents();

    /// Where the next document goes. What is there is replaced, and its memory used again.
    void FillIn(ClipMetadata& metadata);
    /// Behind its end.
    void Finish();
    /// About how many bytes that takes which was kept of the last document.
    [[nodiscard]] std::size_t Kept() const { return m_most - m_budget; }
    /// Of the last document, by memo.
    [[nodiscard]] const std::vector<MemoHints>& Hints() const { return m_hints; }

    void Begin(std::uint64_t bytes) override;
    void Open(std::string_view name) override;
    void Attribute(std::string_view name, std::string_view value) override;
    void Characters(std::string_view text) override;
    void Close() override;
    void Known(std::span<const dom::Mark> marks) override;

private:
    struct Opened {
        TextPlace* place;
        bool hasElements = false;
        bool hasAttributes = false;
    };

    [[nodiscard]] TextPlace* Innermost() const {
        return m_open.empty() ? nullptr : m_open.back().place;
    }
    TextPlace* NextPlace(std::string_view name, bool isAttribute);
    bool Spend(std::size_t bytes);
    void BeginMemo();
    void TakeStretch();
    void TakeLeaf(const Opened& element);
    void TakeMemoText(TextPlace& place, std::string_view text);
    void Keep(TextPlace& place, std::string_view text);

    TextPlaces m_places;
    ClipMetadata* m_metadata = nullptr;
    std::vector<MemoHints> m_hints;
    std::vector<bool> m_told; ///< members, by index
    std::int64_t m_texts = 0; ///< in the list of others
    std::vector<Opened> m_open;
    std::size_t m_beyond = 0; ///< open elements of what is no longer kept
    std::string_view m_run;   ///< the text since the last tag,
    std::string m_joined;     ///< in here when it came in pieces
    std::size_t m_most = 0;   ///< bytes that may be kept of it,
    std::size_t m_budget = 0; ///< and that still may be
};

} // namespace nqp2::clips
