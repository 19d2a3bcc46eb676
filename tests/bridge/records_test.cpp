// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/ClipListRecords.h"
#include "NQP2ParserU/R8P2TransInfo.h"
#include "tests/bridge/wire_example.h"
#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <iterator>

namespace nqp2::bridge {
namespace {

_BLCLIP ClipOfTheExample() {
    return {L"a", L"b", L"c", L"d", L"e", L"f", -1,  -2,   -3,  -4,  -5,  -6,
            -7,   -8,   -9,   L"g", L"",  L"i", -10, L"j", -11, -12, -13, L"kk"};
}

Bytes Saved(const _BLCLIP& clip) {
    Bytes bytes(static_cast<std::size_t>(clip.GetSize()));
    unsigned char* at = bytes.data();
    EXPECT_EQ(clip.SaveToBuf(at), std::ssize(bytes));
    EXPECT_EQ(at, bytes.data() + bytes.size());
    return bytes;
}

TEST(ClipListEntry, HasTheDocumentedBytes) {
    EXPECT_EQ(Saved(ClipOfTheExample()), ReadWireExample("_BLCLIP").bytes);
    EXPECT_EQ(_BLCLIP().GetSize(), 118);
}

TEST(ClipListEntry, RestoresWithAndWithoutALength) {
    Bytes image = ReadWireExample("_BLCLIP").bytes;
    const auto length = static_cast<std::int32_t>(image.size());
    image[6] = 0xFF; // the terminator of text 1: the count overrules it
    for (const bool bounded : {false, true}) {
        Bytes copy = image;
        unsigned char* at = copy.data();
        _BLCLIP clip;
        EXPECT_EQ(bounded ? clip.RestoreFromBuf(at, length) : clip.RestoreFromBuf(at), length);
        EXPECT_EQ(at, copy.data() + length);
        EXPECT_EQ(copy[6], 0);
        EXPECT_EQ(Saved(clip), ReadWireExample("_BLCLIP").bytes);
    }
}

TEST(ClipListEntry, RestoresNothingFromABrokenImageOfKnownLength) {
    const WireExample example = ReadWireExample("_BLCLIP");
    _BLCLIP clip = ClipOfTheExample();
    const auto expectRefused = [&](Bytes image) {
        unsigned char* at = image.data();
        EXPECT_EQ(clip.RestoreFromBuf(at, static_cast<std::int32_t>(image.size())), 0);
        EXPECT_EQ(at, image.data());
        EXPECT_EQ(Saved(clip), example.bytes);
    };
    for (std::size_t length = 0; length < example.bytes.size(); ++length) {
        expectRefused(
            {example.bytes.begin(), example.bytes.begin() + static_cast<std::ptrdiff_t>(length)});
    }
    for (const std::size_t at : example.counts) {
        Bytes image = example.bytes;
        SetCount(image, at, 0xFFFFFFFFU);
        expectRefused(image);
    }
}

TEST(BrokenPoint, TravelsAsItsTwoNumbers) {
    const Bytes image = ReadWireExample("_NQBRDBROKENPOINT").bytes;
    Bytes bytes(8);
    const _NQBRDBROKENPOINT point{5, -6};
    unsigned char* at = bytes.data();
    EXPECT_EQ(point.GetSize(), 8);
    EXPECT_EQ(point.SaveToBuf(at), 8);
    EXPECT_EQ(bytes, image);
    EXPECT_EQ(at, bytes.data() + 8);

    at = bytes.data();
    _NQBRDBROKENPOINT restored;
    EXPECT_EQ(restored.RestoreFromBuf(at), 8);
    EXPECT_EQ(at, bytes.data() + 8);
    EXPECT_EQ(restored.first, 5);
    EXPECT_EQ(restored.second, -6);
}

TEST(ExchangedRecords, DoNothingWithoutABuffer) {
    unsigned char* none = nullptr;
    _BLCLIP clip = ClipOfTheExample();
    _NQBRDBROKENPOINT point{5, -6};
    EXPECT_EQ(clip.SaveToBuf(none), 0);
    EXPECT_EQ(clip.RestoreFromBuf(none), 0);
    EXPECT_EQ(clip.RestoreFromBuf(none, 1000), 0);
    EXPECT_EQ(point.SaveToBuf(none), 0);
    EXPECT_EQ(point.RestoreFromBuf(none), 0);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(point.first, 5);
    EXPECT_EQ(clip.text11, CString(L"kk"));
}

TEST(FileFormat, HasTheDocumentedBytesAndAFixedLength) {
    const Bytes image = ReadWireExample("tag_NQFileFormatEx").bytes;
    tag_NQFileFormatEx format;
    std::uint32_t count = 0;
    EXPECT_EQ(NQ_RestoreFileFormatData(image.data(), format, &count), 1);
    EXPECT_EQ(count, 64U);
    EXPECT_EQ(format.width, 1920U);
    EXPECT_EQ(format.flags, 0x80000000U);

    Bytes saved(static_cast<std::size_t>(NQ_GetFileFormatDataSize(format)));
    EXPECT_EQ(NQ_SaveFileFormatData(saved.data(), format, &count), 1);
    EXPECT_EQ(saved, image);

    EXPECT_EQ(NQ_SaveFileFormatData(nullptr, format, &count), 0);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(NQ_RestoreFileFormatData(nullptr, format, nullptr), 0);
    EXPECT_EQ(format.width, 1920U);
    NQ_InitFileFormat(format);
    EXPECT_EQ(format.width, 0U);
}

} // namespace
} // namespace nqp2::bridge
