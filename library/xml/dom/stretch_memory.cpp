// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/stretch_memory.h"

#include <memory>
#include <new>
#include <type_traits>

namespace nqp2::dom {
namespace {

constexpr std::size_t kMostKept = std::size_t{256} * 1024; ///< and what one document adds
constexpr std::size_t kMostChildren = 64;
constexpr std::size_t kMostStretches = 8; ///< from one position

} // namespace

template <class Type>
Type& StretchMemory::Make(const Type& value) {
    static_assert(std::is_trivially_destructible_v<Type>, "dropped with the arena");
    static_assert(alignof(Type) <= alignof(NodeName), "as the arena aligns");
    return *new (m_arena.Allocate(sizeof(Type))) Type(value);
}

Position& StretchMemory::Begin(bool isLearning) {
    m_isLearning = isLearning;
    if (m_outside == nullptr || m_arena.Used() > kMostKept) {
        m_outside = nullptr;
        m_isFull = false;
        m_arena.Clear();
        m_outside =
            &Make(Position{{}, {}, nullptr, m_wanted != nullptr ? &m_wanted->Top() : nullptr});
    }
    return *m_outside;
}

Position* StretchMemory::Below(Position& parent, std::string_view name, std::string_view key,
                               bool declares) {
    if (parent.isStranger || (!m_isLearning && WantedBelow(parent, name) == nullptr)) {
        return StrangerBelow(parent, name);
    }
    Position** last = &parent.firstChild;
    for (std::size_t count = 0; *last != nullptr; last = &(*last)->next) {
        if ((*last)->key == key) {
            return *last;
        }
        if (++count == kMostChildren) {
            m_isFull = true;
            return WantedBelow(parent, name) == nullptr ? StrangerBelow(parent, name) : nullptr;
        }
    }
    const std::string_view kept = Keep(key);
    const FieldSet::Name* const wanted = WantedBelow(parent, name);
    const bool holdsValue = wanted != nullptr && (wanted->role == FieldSet::Role::Value ||
                                                  wanted->role == FieldSet::Role::Cell);
    *last = &Make(Position{kept.substr(0, name.size()), kept, &parent, wanted, holdsValue,
                           parent.depth + 1, declares});
    return *last;
}

Position* StretchMemory::StrangerBelow(Position& parent, std::string_view name) {
    if (parent.stranger == nullptr) {
        parent.stranger = &Make(Position{});
        parent.stranger->parent = &parent;
        parent.stranger->depth = parent.depth + 1;
        parent.stranger->isStranger = true;
    }
    parent.stranger->name = name;
    return parent.stranger;
}

void StretchMemory::Learn(Position& from, std::string_view bytes, Position& to,
                          std::span<const Mark> marks) {
    Stretch** last = &from.firstStretch;
    for (std::size_t count = 0; *last != nullptr; last = &(*last)->next) {
        if (++count == kMostStretches) {
            return;
        }
    }
    auto* const kept = static_cast<Mark*>(m_arena.Allocate(marks.size() * sizeof(Mark)));
    std::uninitialized_copy(marks.begin(), marks.end(), kept);
    *last = &Make(Stretch{Keep(bytes), &to, {kept, marks.size()}});
}

} // namespace nqp2::dom
