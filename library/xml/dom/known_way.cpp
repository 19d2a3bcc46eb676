// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/known_way.h"

#include <algorithm>

namespace nqp2::dom {

bool Declares(std::span<const quick::Attribute> attributes) {
    return std::any_of(attributes.begin(), attributes.end(),
                       [](const quick::Attribute& each) { return each.name.IsDeclaration(); });
}

void KnownWay::Begin(std::string_view bytes, const char* decoded, bool mayLearn) {
    m_bytes = bytes;
    m_decoded = decoded;
    m_isLearning = mayLearn && m_learning.IsTried();
    m_at = &m_memory.Begin(m_isLearning);
    m_leapt = 0;
    m_missed = 0;
    m_isKnown = false;
    m_from = nullptr;
    m_marks.clear();
}

void KnownWay::End(bool isTaken) {
    // Whether so much was known that it was worth learning what was not.
    const bool wasUseful = isTaken && m_leapt > 2 * m_missed;
    if (isTaken) {
        if (!m_isKnown) {
            LearnUpTo(m_bytes.size());
        }
        m_learning.Note(wasUseful);
    }
    if (!wasUseful) {
        m_memory.ForgetWhenFull();
    }
}

bool KnownWay::Enter(const quick::Name& name, std::span<const quick::Attribute> attributes,
                     bool declares) {
    const bool isRoot = m_at->depth == 0;
    Position* const inside =
        m_memory.Below(*m_at, name.text, declares ? KeyOf(name, attributes) : name.text, declares);
    if (inside == nullptr) {
        return false;
    }
    m_at = inside;
    if (isRoot) {
        m_isKnown = IsWorthAsking(); // from behind its tag
    } else if (MustBeSeen()) {
        m_from = nullptr;
        m_isKnown = m_isKnown && IsWorthAsking();
        m_missed += m_at->isStranger ? 1U : 0U;
    }
    return true;
}

/// The name and all that may be declared.
std::string_view KnownWay::KeyOf(const quick::Name& name,
                                 std::span<const quick::Attribute> attributes) {
    m_key = name.text;
    for (const quick::Attribute& each : attributes) {
        for (const std::string_view part : {each.name.text, each.value}) {
            (m_key += '\0') += part; // which is in neither
        }
    }
    return m_key;
}

void KnownWay::LearnFrom(std::size_t offset) {
    ++m_missed;
    m_isKnown = false;
    m_from = m_at;
    m_unknown = offset;
    m_marks.clear();
}

/// From what follows there the memory may know how to go on.
void KnownWay::LearnUpTo(std::size_t offset) {
    if (m_from != nullptr) {
        m_memory.Learn(*m_from, m_bytes.substr(m_unknown, offset - m_unknown), *m_at, m_marks);
        m_from = nullptr;
    }
    m_isKnown = IsWorthAsking();
}

} // namespace nqp2::dom
