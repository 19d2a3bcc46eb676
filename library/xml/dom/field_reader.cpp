// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/field_reader.h"

#include "xml/dom/quick_tokenizer.h"

#include <new>

namespace nqp2::dom {
namespace {

// As a tree it takes at most forty times as much, less than the least limit on trees; and texts of
// it that are asked for several times stay below what may be taken from any document.
constexpr std::size_t kLargestRead = std::size_t{48} * 1024;

using Role = FieldSet::Role;

} // namespace

/// Notes what is wanted.
class FieldReader::Sink {
public:
    explicit Sink(FieldReader& reader)
        : m_reader(reader), m_values(reader.m_values), m_way(reader.m_way) {}

    static void Declaration(std::string_view /*text*/) {}

    bool Open(const quick::Name& name, std::string_view /*uri*/,
              std::span<const quick::Attribute> attributes) {
        const bool isRoot = m_way.At().depth == 0;
        if (HoldsValue() || (!isRoot && name.text == m_reader.m_wanted.RootName())) {
            return false; // a value in parts, or a base somewhere else
        }
        const bool declares = Declares(attributes);
        if (!m_way.Enter(name, attributes, declares)) {
            return false;
        }
        const FieldSet::Name* const wanted = m_way.At().wanted;
        if (isRoot || wanted == nullptr || wanted->role == Role::Passed) {
            return true;
        }
        const Mark mark = {Mark::Kind::Open, &m_way.At(), {}, AttributeIn(attributes)};
        if (m_way.IsLearning()) {
            m_way.Note(mark);
        }
        return !(declares && !wanted->attribute.empty()) && Take(mark);
    }

    void Close() { m_way.Leave(); }
    [[nodiscard]] std::string_view OpenName() const { return m_way.At().name; }

    bool Characters(NodeType type, std::string_view text) {
        const bool isText = type == NodeType::Text; // which begins where a step does
        if (isText && (HoldsValue() || !quick::IsBlank(text))) {
            m_way.MeetText(text);
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
        const Stretch* const known = m_way.Find(at);
        if (known == nullptr) {
            return 0;
        }
        for (const Mark& each : known->marks) {
            if (!Take(each)) {
                return 0; // which is met again, step by step
            }
        }
        return m_way.Follow(*known, depth);
    }

private:
    [[nodiscard]] bool HoldsValue() const { return m_way.At().holdsValue; }

    std::string_view AttributeIn(std::span<const quick::Attribute> attributes) {
        const std::string_view wanted = m_way.At().wanted->attribute;
        for (const quick::Attribute& each : attributes) {
            if (!wanted.empty() && each.name.Base() == wanted) {
                return m_way.Keep(each.value);
            }
        }
        return {};
    }

    /// An element that counts begins. False for a second base.
    bool Take(const Mark& opened) {
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
            *m_slot = {true, {}, opened.text};
        }
        return true;
    }

    static void Grow(FieldValues::List& list, std::size_t cells) {
        ++list.count;
        list.cells.resize(list.count * cells);
    }

    FieldReader& m_reader;
    FieldValues& m_values;
    KnownWay& m_way;
    /// Of the value's element that was opened last; null for one that is not the first.
    FieldValues::Value* m_slot = nullptr;
};

FieldReader::FieldReader(const FieldSet& wanted) : m_wanted(wanted), m_way(&wanted) {}

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
        m_way.Begin(bytes, m_text.data(), true);
        Sink sink(*this);
        const bool isTaken = quick::Tokenizer(sink, m_text.data(), bytes.size()).Document();
        m_way.End(isTaken);
        return isTaken;
    } catch (const std::bad_alloc&) {
        return false; // the tree takes its own chance, and tells of it
    }
}

} // namespace nqp2::dom
