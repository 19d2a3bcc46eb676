// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <iterator>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

/// A growable array of values with the framework's operation names. Indices count from 0;
/// an index out of range throws std::out_of_range. Copying copies every element.
template <class Type, class ArgType = const Type&>
class CArray {
public:
    /// What the array holds, under the name that the standard's algorithms look for.
    using value_type = Type;

    ///@{
    /// How many elements there are, from 0.
    [[nodiscard]] std::int64_t GetSize() const { return std::ssize(m_items); }
    [[nodiscard]] std::int64_t GetCount() const { return GetSize(); }
    ///@}
    /// The index of the last element; -1 for an empty array.
    [[nodiscard]] std::int64_t GetUpperBound() const { return GetSize() - 1; }
    /// True for an array without elements.
    [[nodiscard]] bool IsEmpty() const { return m_items.empty(); }

    /// Appends a copy and returns its index.
    std::int64_t Add(ArgType item) {
        m_items.push_back(item);
        return GetUpperBound();
    }
    /// Appends what the caller gives away.
    std::int64_t Add(Type&& item) requires std::is_same_v<ArgType, const Type&> {
        m_items.push_back(std::move(item));
        return GetUpperBound();
    }
    /// Appends all of `other` and returns the index of the first appended element.
    std::int64_t Append(const CArray& other) {
        const std::int64_t first = GetSize();
        // By index and to a fixed end, because an array may be appended to itself.
        for (std::size_t i = 0, n = other.m_items.size(); i < n; ++i) {
            m_items.push_back(other.m_items[i]);
        }
        return first;
    }
    /// Becomes a copy of `other`, element by element.
    void Copy(const CArray& other) { m_items = other.m_items; }

    ///@{
    /// The element at `index`; stays the array's. Throws std::out_of_range beyond the elements.
    [[nodiscard]] const Type& GetAt(std::int64_t index) const { return m_items.at(Slot(index)); }
    [[nodiscard]] Type& GetAt(std::int64_t index) { return m_items.at(Slot(index)); }
    const Type& operator[](std::int64_t index) const { return GetAt(index); }
    Type& operator[](std::int64_t index) { return GetAt(index); }
    ///@}
    /// Replaces the element at `index` by a copy. Throws std::out_of_range beyond the elements.
    void SetAt(std::int64_t index, ArgType item) { GetAt(index) = item; }

    /// Inserts `count` copies; an index beyond the end grows the array up to it first.
    void InsertAt(std::int64_t index, ArgType item, std::int64_t count = 1) {
        if (index < 0) {
            throw std::out_of_range("CArray::InsertAt");
        }
        const Type copy = item; // `item` may be an element that growing moves
        if (index > GetSize()) {
            SetSize(index);
        }
        m_items.insert(m_items.begin() + index, Slot(count), copy);
    }
    /// Removes up to `count` elements from `index` on; an index out of range removes nothing.
    void RemoveAt(std::int64_t index, std::int64_t count = 1) {
        if (index < 0 || index >= GetSize() || count <= 0) {
            return;
        }
        const auto first = m_items.begin() + index;
        const std::int64_t room = GetSize() - index;
        m_items.erase(first, first + (count < room ? count : room));
    }
    /// Destroys every element; the room stays.
    void RemoveAll() { m_items.clear(); }
    /// Cuts the array off, or fills it up with fresh values.
    void SetSize(std::int64_t size) { m_items.resize(Slot(size)); }
    /// Makes room for `size` elements in all, so that adding up to there moves none.
    void Reserve(std::int64_t size) { m_items.reserve(Slot(size)); }

    ///@{
    /// The elements one behind the other, valid until the array grows or goes.
    [[nodiscard]] const Type* GetData() const { return m_items.data(); }
    [[nodiscard]] Type* GetData() { return m_items.data(); }
    ///@}

    ///@{
    /// For range-for and the standard's algorithms; valid until the array grows or goes.
    auto begin() { return m_items.begin(); }
    auto end() { return m_items.end(); }
    [[nodiscard]] auto begin() const { return m_items.begin(); }
    [[nodiscard]] auto end() const { return m_items.end(); }
    ///@}

private:
    static std::size_t Slot(std::int64_t index) { return static_cast<std::size_t>(index); }

    std::vector<Type> m_items;
};
