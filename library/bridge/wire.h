// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Guid.h"
#include "NQP2ParserU/MediaHeaders.h"

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

/// The byte form of messages and records: docs/wire.md.
///
/// A record is described once, by a function `Describe(archive, record)` that names its fields in
/// wire order. Counting, writing and reading are three archives that go through the same
/// description, so that they cannot drift apart.
namespace nqp2::bridge {

static_assert(std::endian::native == std::endian::little, "numbers travel as they lie in memory");

/// What travels as its bytes in memory.
template <class Type>
inline constexpr bool kTravelsRaw = std::is_integral_v<Type> || std::is_enum_v<Type>;
template <>
inline constexpr bool kTravelsRaw<bool> = false; ///< not every byte is one
template <>
inline constexpr bool kTravelsRaw<GUID> = true;
template <>
inline constexpr bool kTravelsRaw<BITMAPINFOHEADER> = true;
template <>
inline constexpr bool kTravelsRaw<WAVEFORMATEX> = true;

/// The record, const or not: what a description's second parameter is.
template <class Self, class Record>
concept RecordOf = std::same_as<std::remove_const_t<Self>, Record>;

/// Sorts the fields of a description by their kind.
template <class Archive>
class FieldArchive {
public:
    template <class... Fields>
    void operator()(Fields&... fields) {
        (Field(fields), ...);
    }

private:
    template <class Type>
    void Field(Type& field) {
        if constexpr (kTravelsRaw<std::remove_const_t<Type>>) {
            Self().Raw(&field, sizeof(field));
        } else {
            Compound(field);
        }
    }
    void Compound(const bool& flag) { Self().Flag(flag); }
    void Compound(bool& flag) { Self().Flag(flag); }
    void Compound(const CString& text) { Self().Text(text); }
    void Compound(CString& text) { Self().Text(text); }
    template <class Item>
    void Compound(const CArray<Item>& list) {
        Self().List(list);
    }
    template <class Item>
    void Compound(CArray<Item>& list) {
        Self().List(list);
    }
    template <class Item, std::size_t Count>
    void Compound(Item (&items)[Count]) {
        for (Item& item : items) {
            Field(item);
        }
    }
    template <class Record>
    void Compound(Record& record) {
        Describe(Self(), record);
    }

    Archive& Self() { return static_cast<Archive&>(*this); }
};

/// Counts what a record takes.
class SizeCounter : public FieldArchive<SizeCounter> {
public:
    /// Bytes that are written.
    [[nodiscard]] std::uint64_t Image() const { return m_image; }
    /// Bytes that the record claims to take: what peers test their buffers against.
    [[nodiscard]] std::uint64_t Figure() const { return m_figure; }

    void Raw(const void* source, std::size_t size);
    void Flag(bool /*flag*/) { Add(1); }
    void Text(const CString& text);
    template <class Item>
    void List(const CArray<Item>& list) {
        Add(sizeof(std::uint32_t));
        for (const Item& item : list) {
            (*this)(item);
        }
    }
    void Run(const unsigned char* data, std::uint32_t length);
    void OptionalBytes(const unsigned char* data, std::uint64_t count, std::size_t behind);
    template <class... Fields>
    void Uncounted(Fields&... fields) {
        const std::uint64_t figure = m_figure;
        (*this)(fields...);
        m_figure = figure;
    }

private:
    void Add(std::uint64_t size);

    std::uint64_t m_image = 0;
    std::uint64_t m_figure = 0;
};

/// Writes records to a buffer. What does not fit is not written, nor is anything behind it.
class WireWriter : public FieldArchive<WireWriter> {
public:
    WireWriter(unsigned char* buffer, std::uint64_t capacity);

    /// Bytes written, or 0 when something did not fit.
    [[nodiscard]] std::uint64_t Written() const { return m_failed ? 0 : m_written; }

    void Raw(const void* source, std::uint64_t size);
    void Flag(bool flag);
    void Text(const CString& text);
    template <class Item>
    void List(const CArray<Item>& list) {
        Count(static_cast<std::uint32_t>(list.GetSize()));
        for (const Item& item : list) {
            (*this)(item);
        }
    }
    /// A length and that many bytes. Kept, workers rely on it: without data the length travels
    /// alone.
    void Run(const unsigned char* data, std::uint32_t length);
    /// `count` bytes, or none without data.
    void OptionalBytes(const unsigned char* data, std::uint64_t count, std::size_t behind);
    /// Fields that the record's size figure leaves out.
    template <class... Fields>
    void Uncounted(Fields&... fields) {
        (*this)(fields...);
    }

private:
    void Count(std::uint32_t count) { Raw(&count, sizeof(count)); }

    unsigned char* m_target;
    std::uint64_t m_capacity;
    std::uint64_t m_written = 0;
    bool m_failed = false;
};

/// Fewest bytes that an item of a list takes.
template <class Item>
std::uint64_t LeastImage() {
    SizeCounter counter;
    const Item item{};
    counter(item);
    return counter.Image();
}

/// Reads records from a buffer that another process may be rewriting: each number is copied before
/// it is looked at, and never read again. Once something is not there in full, nothing more is
/// read.
class WireReader : public FieldArchive<WireReader> {
public:
    WireReader(unsigned char* buffer, std::uint64_t length);

    /// Bytes read, or 0 when something was not there in full.
    [[nodiscard]] std::uint64_t Read() const { return m_failed ? 0 : m_read; }

    void Raw(void* target, std::size_t size);
    /// A byte that is neither 0 nor 1 is none.
    void Flag(bool& flag);
    /// Kept, workers rely on it: the count alone says where a text ends, and the unit behind it is
    /// set to 0 in the buffer.
    void Text(CString& text);
    template <class Item>
    void List(CArray<Item>& list) {
        const std::uint32_t count = Count(LeastImage<Item>());
        list.RemoveAll();
        for (std::uint32_t i = 0; i < count && !m_failed; ++i) {
            Item item;
            (*this)(item);
            list.Add(item);
        }
    }
    /// A length, and a pointer to that many bytes in the buffer; null for none.
    void Run(const unsigned char*& data, std::uint32_t& length);
    /// A pointer to `count` bytes in the buffer. Null for none, and when no more than the `behind`
    /// bytes of the fields behind them are left: then the sender had none.
    void OptionalBytes(const unsigned char*& data, std::uint64_t count, std::size_t behind);
    template <class... Fields>
    void Uncounted(Fields&... fields) {
        (*this)(fields...);
    }

private:
    [[nodiscard]] std::uint64_t Left() const { return m_length - m_read; }
    /// The next bytes, or null and failure when they are not there.
    unsigned char* Take(std::uint64_t size);
    /// A count of items that take at least `least` bytes each; 0 and failure when they cannot all
    /// be there.
    std::uint32_t Count(std::uint64_t least);

    unsigned char* m_source;
    std::uint64_t m_length;
    std::uint64_t m_read = 0;
    bool m_failed = false;
};

} // namespace nqp2::bridge
