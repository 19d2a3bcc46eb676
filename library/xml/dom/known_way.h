// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/patience.h"
#include "xml/dom/quick_cursor.h"
#include "xml/dom/quick_namespaces.h"
#include "xml/dom/stretch_memory.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::dom {

/// The way of a tokenizer's sink through documents of one kind: over what it knows from those
/// before in one go, else step by step, which it learns: from where it did not know how to go on to
/// the next text that is more than blanks.
class KnownWay {
public:
    /// As StretchMemory's.
    explicit KnownWay(const FieldSet* wanted) : m_memory(wanted) {}

    /// Before each document: its bytes as they are, and the place where they are decoded.
    void Begin(std::string_view bytes, const char* decoded, bool mayLearn);
    /// Behind it; whether the tokenizer took it.
    void End(bool isTaken);

    /// Where it is.
    [[nodiscard]] const Position& At() const { return *m_at; }
    /// Into an element. False where that cannot be told from others, though it counts.
    bool Enter(const quick::Name& name, std::span<const quick::Attribute> attributes,
               bool declares);
    void Leave() {
        if (MustBeSeen()) {
            m_from = nullptr;
        }
        m_at = m_at->parent;
    }
    /// To a text that no stretch holds, since it is more than blanks or counts.
    void MeetText(std::string_view text) {
        if (!m_isKnown) {
            LearnUpTo(OffsetOf(text.data()));
        }
    }

    /// Whether what is met is learned.
    [[nodiscard]] bool IsLearning() const { return m_from != nullptr; }
    /// Of what is met, for what is learned. Its texts must be kept.
    void Note(const Mark& mark) { m_marks.push_back(mark); }
    [[nodiscard]] std::vector<Mark>& Marks() { return m_marks; }
    std::string_view Keep(std::string_view text) { return m_memory.Keep(text); }

    /// What is known to come there; null for nothing.
    const Stretch* Find(const char* at) {
        if (!m_isKnown || *at != '<') {
            return nullptr;
        }
        // Nothing behind it has been decoded.
        const std::string_view rest(at, m_bytes.size() - OffsetOf(at));
        const Stretch* const known = StretchMemory::Find(*m_at, rest);
        if (known == nullptr) {
            LearnFrom(OffsetOf(at));
        }
        return known;
    }
    /// Goes over it. Returns how far.
    std::size_t Follow(const Stretch& known, int& depth) {
        ++m_leapt;
        m_at = known.end;
        depth = m_at->depth;
        return known.bytes.size();
    }

private:
    [[nodiscard]] bool IsWorthAsking() const { return m_isLearning && !m_at->isStranger; }
    /// No stretch leads into it or out of it.
    [[nodiscard]] bool MustBeSeen() const { return m_at->declares || m_at->isStranger; }
    [[nodiscard]] std::size_t OffsetOf(const char* at) const {
        return static_cast<std::size_t>(at - m_decoded);
    }
    std::string_view KeyOf(const quick::Name& name, std::span<const quick::Attribute> attributes);
    void LearnFrom(std::size_t offset);
    void LearnUpTo(std::size_t offset);

    StretchMemory m_memory;
    Patience m_learning;
    std::string m_key;
    std::vector<Mark> m_marks; ///< of what is to be learned

    std::string_view m_bytes;        ///< the document as it is
    const char* m_decoded = nullptr; ///< its place
    bool m_isLearning = false;
    std::size_t m_leapt = 0;  ///< so often the memory knew how to go on,
    std::size_t m_missed = 0; ///< so often it did not
    Position* m_at = nullptr;
    bool m_isKnown = false;     ///< it is worth asking the memory
    Position* m_from = nullptr; ///< null: what comes is not to be learned
    std::size_t m_unknown = 0;  ///< from there on
};

/// Whether one of an element's attributes declares a namespace.
bool Declares(std::span<const quick::Attribute> attributes);

} // namespace nqp2::dom
