// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/field_reader.h"

#include "xml/dom/quick_tokenizer.h"

#include <algorithm>
#include <new>

namespace nqp2::dom {
namespace {

// As a tree it takes at most forty times as much, less than the least limit on trees; and texts of
// it that are asked for several times stay below what may be taken from any document.
constexpr std::size_t kLargestRead = std::size_t{48} * 1024;

using Role = FieldSet::Role;

bool IsBlank(std::string_view text) {
    for (const char ch : text) {
        if (!quick::Is(ch, quick::kBlank)) {
            return false;
        }
    }
    return true;
}

} // namespace

/// Notes what is wanted, and what there is to learn: from where the memory did not know how to go
/// on to the next text that is more than blanks.
class FieldReader::Sink {
public:
    Sink(FieldReader& reader, std::string_view bytes)
        : m_reader(reader), m_values(reader.m_values), m_memory(reader.m_memory), m_bytes(bytes),
          m_isLearning(reader.m_learning.IsTried()), m_at(&m_memory.Begin(m_isLearning)) {
        m_reader.m_opened.clear();
    }

    static void Declaration(std::string_view /*text*/) {}

    bool Open(const quick::Name& name, std::string_view /*uri*/,
              std::span<const quick::Attribute> attributes) {
        const bool isRoot = m_at->depth == 0;
        const bool declares = std::any_of(attributes.begin(), attributes.end(), IsDeclaration);
        if (HoldsValue() || (!isRoot && name.text == m_reader.m_wanted.RootName())) {
            return false; // a value in parts, or a base somewhere else
        }
        m_at = m_memory.Below(*m_at, name.text, declares ? KeyOf(name, attributes) : name.text,
                              declares);
        if (m_at == nullptr) {
            return false;
        }
        if (isRoot) {
            m_isKnown = IsWorthAsking(); // from behind its tag
            return true;
        }
        if (MustBeSeen()) {
            m_from = nullptr;
            m_isKnown = m_isKnown && IsWorthAsking();
            m_missed += m_at->isStranger ? 1U : 0U;
        }
        if (m_at->wanted == nullptr || m_at->wanted->role == Role::Passed) {
            return true;
        }
        m_reader.m_opened.push_back({m_at, AttributeIn(attributes)});
        return !(declares && !m_at->wanted->attribute.empty()) && Note(m_reader.m_opened.back());
    }

    void Close() {
        if (MustBeSeen()) {
            m_from = nullptr;
        }
        m_at = m_at->parent;
    }
    [[nodiscard]] std::string_view OpenName() const { return m_at->name; }

    bool Characters(NodeType type, std::string_view text) {
        const bool isText = type == NodeType::Text; // which begins where a step does
        if (!m_isKnown && isText && (HoldsValue() || !IsBlank(text))) {
            LearnUpTo(text.data());
        }
        if (!HoldsValue()) {
            return true;
        }
        if (m_slot != nullptr) {
            m_slot->text = text;
        }
        return isText;
    }

    bool Comment(std::string_view /*text*/) { return !HoldsValue(); }

    std::size_t Leap(const char* at, int& depth) {
        if (!m_isKnown || *at != '<') {
            return 0;
        }
        const std::string_view rest(m_bytes.data() + OffsetOf(at), m_bytes.size() - OffsetOf(at));
        const Stretch* const known = FieldMemory::Find(*m_at, rest);
        if (known == nullptr) {
            ++m_missed;
            m_isKnown = false;
            m_from = m_at;
            m_unknown = rest;
            m_reader.m_opened.clear();
            return 0;
        }
        for (std::size_t i = 0; i < known->openedCount; ++i) {
            if (!Note(known->opened[i])) {
                return 0; // which is met again, step by step
            }
        }
        ++m_leapt;
        m_at = known->end;
        depth = m_at->depth;
        return known->bytes.size();
    }

    /// Whether so much was known that it was worth learning what was not.
    [[nodiscard]] bool WasLearningUseful() const { return m_leapt > 2 * m_missed; }

    void LearnTheEnd() {
        if (!m_isKnown) {
            LearnUpTo(m_reader.m_text.data() + m_bytes.size());
        }
    }

private:
    [[nodiscard]] bool HoldsValue() const { return m_at->holdsValue; }
    [[nodiscard]] bool IsWorthAsking() const { return m_isLearning && !m_at->isStranger; }
    /// No stretch leads into it or out of it.
    [[nodiscard]] bool MustBeSeen() const { return m_at->declares || m_at->isStranger; }

    [[nodiscard]] std::size_t OffsetOf(const char* at) const {
        return static_cast<std::size_t>(at - m_reader.m_text.data());
    }

    static bool IsDeclaration(const quick::Attribute& attribute) {
        return attribute.name.IsDeclaration();
    }

    /// The name and all that may be declared.
    std::string_view KeyOf(const quick::Name& name, std::span<const quick::Attribute> attributes) {
        std::string& key = m_reader.m_key;
        key = name.text;
        for (const quick::Attribute& each : attributes) {
            for (const std::string_view part : {each.name.text, each.value}) {
                (key += '\0') += part; // which is in neither
            }
        }
        return key;
    }

    std::string_view AttributeIn(std::span<const quick::Attribute> attributes) {
        for (const quick::Attribute& each : attributes) {
            if (!m_at->wanted->attribute.empty() && each.name.Base() == m_at->wanted->attribute) {
                return m_memory.Keep(each.value);
            }
        }
        return {};
    }

    /// An element that counts begins. False for a second base.
    bool Note(const OpenedField& opened) {
        const FieldSet::Name& wanted = *opened.position->wanted;
        FieldValues::Value* slot = nullptr;
        switch (wanted.role) {
        case Role::Base:
            if (m_values.hasBase) {
                return false;
            }
            m_values.hasBase = true;
            return true;
        case Role::List:
            Grow(m_values.lists[wanted.index], m_reader.m_wanted.CellCounts()[wanted.index]);
            return true;
        case Role::Value:
            slot = &m_values.values[wanted.index];
            break;
        case Role::Cell: {
            FieldValues::List& list = m_values.lists[wanted.list];
            const std::size_t cells = m_reader.m_wanted.CellCounts()[wanted.list];
            slot = &list.cells[(list.count - 1) * cells + wanted.index];
            break;
        }
        case Role::Passed:
            return true;
        }
        m_slot = slot->isThere ? nullptr : slot;
        if (m_slot != nullptr) {
            *m_slot = {true, {}, opened.attribute};
        }
        return true;
    }

    static void Grow(FieldValues::List& list, std::size_t cells) {
        ++list.count;
        list.cells.resize(list.count * cells);
    }

    /// From what follows there the memory may know how to go on.
    void LearnUpTo(const char* at) {
        if (m_from != nullptr) {
            m_memory.Learn(*m_from, m_unknown.substr(0, OffsetOf(at) - OffsetOfUnknown()), *m_at,
                           m_reader.m_opened);
        }
        m_isKnown = IsWorthAsking();
    }
    [[nodiscard]] std::size_t OffsetOfUnknown() const {
        return static_cast<std::size_t>(m_unknown.data() - m_bytes.data());
    }

    FieldReader& m_reader;
    FieldValues& m_values;
    FieldMemory& m_memory;
    std::string_view m_bytes; ///< the document as it is
    bool m_isLearning;
    std::size_t m_leapt = 0;  ///< so often the memory knew how to go on,
    std::size_t m_missed = 0; ///< so often it did not
    Position* m_at;
    bool m_isKnown = false;     ///< it is worth asking the memory
    Position* m_from = nullptr; ///< null: what comes is not to be learned
    std::string_view m_unknown; ///< from there on
    /// Of the value's element that was opened last; null for one that is not the first.
    FieldValues::Value* m_slot = nullptr;
};

FieldReader::FieldReader(const FieldSet& wanted) : m_wanted(wanted), m_memory(wanted) {}

bool FieldReader::Read(std::string_view bytes) noexcept {
    const bool isTaken = m_reading.IsTried() && bytes.size() <= kLargestRead && TryRead(bytes);
    m_reading.Note(isTaken);
    return isTaken;
}

bool FieldReader::TryRead(std::string_view bytes) noexcept {
    try {
        m_values.hasBase = false;
        m_values.values.assign(m_wanted.ValueCount(), {});
        m_values.lists.resize(m_wanted.CellCounts().size());
        for (FieldValues::List& list : m_values.lists) {
            list.count = 0;
            list.cells.clear();
        }
        m_text = bytes;
        Sink sink(*this, bytes);
        const bool isTaken = quick::Tokenizer(sink, m_text.data(), bytes.size()).Document();
        const bool wasUseful = isTaken && sink.WasLearningUseful();
        if (isTaken) {
            sink.LearnTheEnd();
            m_learning.Note(wasUseful);
        }
        if (!wasUseful) {
            m_memory.ForgetWhenFull();
        }
        return isTaken;
    } catch (const std::bad_alloc&) {
        return false; // the tree takes its own chance, and tells of it
    }
}

} // namespace nqp2::dom
