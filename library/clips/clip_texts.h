// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/element_paths.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Guid.h"
#include "xml/document_queries.h"
#include "xml/dom/field_reader.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::clips {

using media::ClipList;
using media::ClipPath;
using media::MemoName;

/// Remembers the short texts that were read last, so that what a card repeats from clip to clip
/// (codec, rate, aspect, names of people) is in memory once. Of fixed size.
class TextPool {
public:
    /// The text of the UTF-8 bytes; shared with earlier ones of the same content when it can be.
    CString TextOf(std::string_view utf8);

private:
    static constexpr std::size_t kSlots = 256;
    static constexpr std::size_t kLongestShared = 32;
    struct Slot {
        std::string bytes;
        CString text;
    };
    std::array<Slot, kSlots> m_slots;
};

/// What is read of a clip file: for a dom::FieldReader, which reads many of them.
const dom::FieldSet& ClipFields();
/// The same, and what tells which files the clip has: the cells of AudioCell of each channel, and
/// behind the values of ClipPath that of kIconFormat.
const dom::FieldSet& ClipAndFileFields();
enum class AudioCell { StartByteOffset, DataSize, Count };
inline constexpr std::size_t kIconFormat = media::kClipPathCount;

/// The values of one clip file, from its tree or as they were read without one. They are the same:
/// see xml::DocumentValues for those of a tree. More text than a file of this size may give throws
/// std::length_error.
class ClipTexts {
public:
    /// `document` must stay unchanged and both must outlive this object.
    ClipTexts(const dom::Document& document, TextPool& pool);
    /// Of one of the sets above.
    ClipTexts(const dom::FieldValues& fields, TextPool& pool);
    ClipTexts(const ClipTexts&) = delete;
    ClipTexts& operator=(const ClipTexts&) = delete;

    /// Whether there is any clip content.
    [[nodiscard]] bool HasContent() const;
    /// Whether there is the value's element.
    [[nodiscard]] bool Has(ClipPath path) const;
    /// Whether the value's text has any character.
    [[nodiscard]] bool HasText(ClipPath path) const;
    /// The value's text, "" for a missing element.
    [[nodiscard]] CString Text(ClipPath path) const;
    /// The leading number of the text, 0 for a missing element.
    [[nodiscard]] std::int32_t Int32(ClipPath path) const;
    [[nodiscard]] std::int64_t Int64(ClipPath path) const;
    /// The GUID of the identifier in the text, all zero for a missing element.
    [[nodiscard]] GUID Guid(ClipPath path) const;
    /// The attribute that media::AttributeOf names, "" when it or the element is missing.
    [[nodiscard]] CString Attribute(ClipPath path) const;
    /// How many elements the list has.
    [[nodiscard]] std::size_t Count(ClipList list) const;
    /// The text of the first child of that name of the memo at `index`, "" for a missing one.
    [[nodiscard]] CString MemoText(std::size_t index, MemoName name) const;

private:
    /// A document's values, found in its tree.
    struct InTree {
        explicit InTree(const dom::Document& document);

        [[nodiscard]] std::string_view Spent(const dom::Node* node, std::string& scratch) const {
            return values.Text(node, scratch);
        }
        [[nodiscard]] const dom::Node* Find(ClipPath path) const {
            return values.Find(static_cast<std::size_t>(path));
        }
        const std::vector<dom::Node*>& All(ClipList list) const;

        xml::TextBudget budget;
        xml::DocumentValues values;
        mutable std::array<std::optional<std::vector<dom::Node*>>, media::kClipListCount> lists;
    };
    /// `scratch` may come to hold it.
    [[nodiscard]] std::string_view Utf8(ClipPath path, std::string& scratch) const;
    /// The same, counted as taken from the document.
    [[nodiscard]] std::string_view Spent(ClipPath path, std::string& scratch) const;
    [[nodiscard]] const dom::FieldValues::Value& Field(ClipPath path) const {
        const dom::FieldValues::Value& value = m_fields->values[static_cast<std::size_t>(path)];
        return value.isThere ? value : FirstOfChannels(path, value);
    }
    /// Of the first channel that has it, where it is read of each; else what is given.
    [[nodiscard]] const dom::FieldValues::Value&
    FirstOfChannels(ClipPath path, const dom::FieldValues::Value& otherwise) const;

    TextPool& m_pool;
    std::optional<InTree> m_tree; ///< or
    const dom::FieldValues* m_fields = nullptr;
};

} // namespace nqp2::clips
