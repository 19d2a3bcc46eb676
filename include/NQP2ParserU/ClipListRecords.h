// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/Guid.h"

#include <cstdint>

// Records that the host and the worker exchange in the byte form of the messages. Saving and
// restoring move the caller's pointer behind the image and return the image's length in bytes.
// They return 0, pointer and record unchanged, for a null pointer and when out of memory.

/// An entry of a clip list; what its fields mean is between the host and the worker.
struct NQP2_API _BLCLIP {
    ///@{
    /// A field of the entry, in the image in this order: a number in 4 bytes, a text as its count
    /// of UTF-16 units in 4 bytes, the units and a 0, all little-endian.
    CString text1;
    CString text2;
    CString text3;
    CString text4;
    CString text5;
    CString text6;
    std::int32_t value1 = 0;
    std::int32_t value2 = 0;
    std::int32_t value3 = 0;
    std::int32_t value4 = 0;
    std::int32_t value5 = 0;
    std::int32_t value6 = 0;
    std::int32_t value7 = 0;
    std::int32_t value8 = 0;
    std::int32_t value9 = 0;
    CString text7;
    CString text8;
    CString text9;
    std::int32_t value10 = 0;
    CString text10;
    std::int32_t value11 = 0;
    std::int32_t value12 = 0;
    std::int32_t value13 = 0;
    CString text11;
    ///@}

    /// Bytes of the image with the present texts.
    [[nodiscard]] std::int32_t GetSize() const;
    /// Writes the image; the buffer must have room for GetSize() bytes.
    std::int32_t SaveToBuf(unsigned char*& buffer) const;
    /// Reads an image that must be whole: nothing is checked against an end. The unit behind each
    /// text in the buffer becomes 0.
    std::int32_t RestoreFromBuf(unsigned char*& buffer);
    /// The same from a buffer of `length` bytes; 0, pointer and record unchanged, when the image
    /// does not end within it.
    std::int32_t RestoreFromBuf(unsigned char*& buffer, std::int32_t length);
};

/// A pair of numbers, 8 bytes.
struct NQP2_API _NQBRDBROKENPOINT {
    ///@{
    /// A number of the pair: 4 bytes of the image.
    std::int32_t first = 0;
    std::int32_t second = 0;
    ///@}

    /// Bytes of the image: 8.
    [[nodiscard]] std::int32_t GetSize() const;
    /// Writes the image; the buffer must have room for it.
    std::int32_t SaveToBuf(unsigned char*& buffer) const;
    /// Reads an image, which must be whole.
    std::int32_t RestoreFromBuf(unsigned char*& buffer);
};

/// One number; is only copied.
struct _BROKENMARK {
    std::int64_t value = 0; ///< without a meaning to the library
};
static_assert(sizeof(_BROKENMARK) == 8);

/// Another name of something with an identifier; is only copied.
struct _ALIASINFO {
    ///@{
    /// Between the host and the worker; the library only copies it.
    std::uint8_t flag = 0;
    CString text1;
    GUID identifier;
    CString text2;
    ///@}
};
