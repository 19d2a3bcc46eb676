// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/messages.h"

#include "bridge/connection_record.h"
#include "bridge/wire.h"
#include "tests/bridge/wire_example.h"
#include "tests/support/print_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>

namespace nqp2::bridge {
namespace {

constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
constexpr unsigned char kUntouched = 0xCC;

GUID GuidFrom(unsigned char first) {
    unsigned char bytes[sizeof(GUID)];
    for (unsigned char& byte : bytes) {
        byte = first++;
    }
    GUID guid;
    std::memcpy(&guid, bytes, sizeof(guid));
    return guid;
}

template <class Item>
CArray<Item> ListOf(std::initializer_list<Item> items) {
    CArray<Item> list;
    for (const Item& item : items) {
        list.Add(item);
    }
    return list;
}

CArray<stu_R8PRelationClipInfo> RelatedClips() {
    return ListOf<stu_R8PRelationClipInfo>(
        {{0x61, 0x62, 0x63, GuidFrom(0x10), GuidFrom(0x20), L"p", L"", L"q"}});
}

tag_NQFileFormatEx FormatOf(std::uint32_t fileType) {
    tag_NQFileFormatEx format;
    format.fileType = fileType;
    return format;
}

constexpr std::uint64_t kHigh = 0x100000000; ///< makes a number need its upper half

// clang-format off
/// All in declared order, which is not that of the wire.
stu_R8P2TransInfo TransInfo() {
    return {L"A", L"", L"Bb", 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11,
            kHigh + 1, 12, 13, kHigh + 2, 14, 1,
            {{0xA1, L"T", 0xA2}}, 16,
            {{0xB1, L"I", 0xB2}, 0xB3, 0xB4, 0xB5, GuidFrom(0x30)}, 17,
            kHigh + 3, kHigh + 4, kHigh + 5, kHigh + 6, RelatedClips(), 18, L"D",
            FormatOf(1), FormatOf(2), 19, 20,
            FormatOf(3), FormatOf(4), FormatOf(5), FormatOf(6), FormatOf(7),
            {{}, {}, {}, {}, {}, {}, {}, {}, {0xC1, L"U", 0xC2}}, 21, L"E", 22};
}

NQP2BaseClipInfo BaseClipInfo() {
    return {L"c", GuidFrom(0x40), L"d", 2 * kHigh + 1, 2 * kHigh + 2, 2 * kHigh + 3,
            L"DVSD", L"x", L"", L"z", ListOf<CString>({L"m", L""}), L"e", -5};
}
// clang-format on

constexpr unsigned char kData[] = {0x11, 0x22, 0x33, 0x44, 0x55};
constexpr unsigned char kPixels[] = {1, 2, 3, 4, 5, 6};

/// The messages of the documented examples.
const auto& Examples() {
    static const std::tuple kExamples{
        SystemTypeMessage{{}, 4, 1},
        ResultMessage{{}, 1},
        ProgressMessage{{}, 0x10, 0x20, 1, 0},
        ImportFileMessage{{}, TransInfo(), 1},
        UploadOffsetMessage{{}, 0x80000001U, 2, 1},
        ExportFileMessage{{}, TransInfo(), ListOf<CString>({L"n1", L""}), 1},
        // One character beyond 16 bits, one surrogate alone.
        TextPairMessage{{}, L"ab", L"\x1F3A5\xD800", 1},
        ValueMessage{{}, -2, 1},
        RTExportParamMessage{{},
                             0x20,
                             {40, 1920, -1080, 1, 24, 0, 0, 0, 0, 0, 0},
                             {1, 2, 48000, 192000, 4, 16, 0},
                             {-1, 0, 1, 2, 3, 4, 5, 6},
                             L"a",
                             L"",
                             L"c",
                             0x71,
                             RelatedClips(),
                             -3,
                             0x73,
                             1},
        StopRTExportMessage{{}, 1, -1, 1},
        BufferMessage{{}, 7, 1, kData, 3},
        AVDataMessage{{}, 2, kData, 2, kData + 2, 3, 1, 1},
        IconMessage{{}, L"a", L"b", {2, 1}, kPixels, 1},
        ErrorTextMessage{{}, L"no", 1},
        BaseClipInfoMessage{{}, L"P", BaseClipInfo(), 1},
        ConnectionRecord{{}, 10240, 20480, 0xFFFFFFFF, 5000},
    };
    return kExamples;
}

template <class Message>
Message Filled() {
    return std::get<Message>(Examples());
}

/// The message's bytes, saved to a buffer far larger than needed.
template <class Message>
Bytes SavedMessage(const Message& message) {
    Bytes buffer(4096, kUntouched);
    const std::int32_t written = message.Save(buffer.data(), 4096);
    buffer.resize(static_cast<std::size_t>(written));
    return buffer;
}

/// Restores from memory that ends where the image ends, so that a sanitizer sees each step too far.
template <class Message>
std::int32_t RestoreFromExact(Message& message, const Bytes& image) {
    const auto buffer = std::make_unique<unsigned char[]>(image.size());
    std::copy(image.begin(), image.end(), buffer.get());
    return message.Restore(buffer.get(), static_cast<std::int32_t>(image.size()));
}

template <class Message>
WireExample Example() {
    std::string title;
    for (const auto id : Message::kIds) {
        title += (title.empty() ? "" : ", ") + std::to_string(static_cast<std::uint32_t>(id));
    }
    return ReadWireExample(title);
}

template <class Message>
class EachMessage : public testing::Test {};
using Messages =
    testing::Types<SystemTypeMessage, ResultMessage, ProgressMessage, ImportFileMessage,
                   UploadOffsetMessage, ExportFileMessage, TextPairMessage, ValueMessage,
                   RTExportParamMessage, StopRTExportMessage, BufferMessage, AVDataMessage,
                   IconMessage, ErrorTextMessage, BaseClipInfoMessage, ConnectionRecord>;
TYPED_TEST_SUITE(EachMessage, Messages);

TYPED_TEST(EachMessage, HasTheDocumentedBytes) {
    EXPECT_EQ(SavedMessage(Filled<TypeParam>()), Example<TypeParam>().bytes);
}

TYPED_TEST(EachMessage, RestoresWhatWasSavedAndIgnoresWhatFollows) {
    const Bytes image = Example<TypeParam>().bytes;
    Bytes longer = image;
    longer.resize(image.size() + 32, kUntouched);
    TypeParam message;
    EXPECT_EQ(message.Restore(longer.data(), static_cast<std::int32_t>(longer.size())),
              std::ssize(image));
    EXPECT_EQ(SavedMessage(message), image);
}

TYPED_TEST(EachMessage, RestoresNothingFromACutImage) {
    const Bytes image = Example<TypeParam>().bytes;
    // An icon cut off just there is one without pixels.
    const std::size_t except =
        std::is_same_v<TypeParam, IconMessage> ? image.size() - 6 : image.size();
    for (std::size_t length = 0; length < image.size(); ++length) {
        TypeParam message = Filled<TypeParam>();
        const Bytes cut(image.begin(), image.begin() + static_cast<std::ptrdiff_t>(length));
        const std::int32_t read = RestoreFromExact(message, cut);
        EXPECT_EQ(read, length == except ? std::ssize(cut) : 0) << length;
        EXPECT_EQ(SavedMessage(message), read == 0 ? image : cut) << length;
    }
    TypeParam message = Filled<TypeParam>();
    EXPECT_EQ(message.Restore(nullptr, kLargest), 0);
    Bytes copy = image;
    EXPECT_EQ(message.Restore(copy.data(), -1), 0);
}

TYPED_TEST(EachMessage, RestoresNothingWhenACountReachesBeyondTheBuffer) {
    const WireExample example = Example<TypeParam>();
    TypeParam message = Filled<TypeParam>();
    for (const std::size_t at : example.counts) {
        const auto left = static_cast<std::uint32_t>(example.bytes.size() - at - 4);
        for (const std::uint32_t count : {0xFFFFFFFFU, 0x80000000U, 0x7FFFFFFFU, left + 1}) {
            Bytes image = example.bytes;
            SetCount(image, at, count);
            EXPECT_EQ(RestoreFromExact(message, image), 0) << count << " at " << at;
            EXPECT_EQ(SavedMessage(message), example.bytes);
        }
    }
}

TYPED_TEST(EachMessage, WritesNothingIntoLessThanItNeeds) {
    const auto message = Filled<TypeParam>();
    const auto needed = static_cast<std::int32_t>(Example<TypeParam>().bytes.size());
    for (const std::int32_t capacity : {-1, 0, message.Size() - 1, needed - 1}) {
        Bytes buffer(4096, kUntouched);
        EXPECT_EQ(message.Save(buffer.data(), capacity), 0) << capacity;
        EXPECT_THAT(buffer, testing::Each(kUntouched));
    }
    EXPECT_EQ(message.Save(nullptr, kLargest), 0);
    const auto exact = std::make_unique<unsigned char[]>(static_cast<std::size_t>(needed));
    EXPECT_EQ(message.Save(exact.get(), needed), needed);
}

TEST(MessageSize, IsTheImageExceptForTheTransferRecord) {
    // Texts 1 to 4; described identifier; numbers; a related clip; sizes; formats; numbers; text 5.
    constexpr std::int32_t kFigure =
        2 * (2 + 1 + 3 + 2) + 44 + 92 + (4 + 66) + 36 + 7 * 64 + 8 + 2 * 2 + 8;
    // The tables, of 18 entries with two units of text, and three numbers.
    constexpr std::int32_t kUncounted = 18 * 14 + 2 * 2 + 12;
    EXPECT_EQ(Filled<ImportFileMessage>().Size(), kFigure + 4);
    EXPECT_EQ(std::ssize(SavedMessage(Filled<ImportFileMessage>())), kFigure + kUncounted + 4);
    EXPECT_EQ(Filled<ExportFileMessage>().Size(), kFigure + (4 + 10 + 6) + 4);
    EXPECT_EQ(Filled<TextPairMessage>().Size(), 10 + 12 + 4); // units, not code points
    EXPECT_EQ(RTExportParamMessage().Size(), 4 + 40 + 18 + 32 + 3 * 6 + 4 + 4 + 4 + 4 + 4);
}

TEST(TransferRecord, StartsEmptyButForValue15) {
    ImportFileMessage restored = Filled<ImportFileMessage>();
    Bytes image = SavedMessage(ImportFileMessage());
    ASSERT_EQ(restored.Restore(image.data(), static_cast<std::int32_t>(image.size())),
              std::ssize(image));
    EXPECT_EQ(restored.info.value15, 1U);
    EXPECT_EQ(restored.info.relatedClips.GetSize(), 0);
    EXPECT_EQ(std::count(image.begin(), image.end(), 0), std::ssize(image) - 1);
}

TEST(WireWriter, WritesNothingBehindWhatDidNotFit) {
    unsigned char buffer[6] = {};
    WireWriter writer(buffer, 5);
    const std::uint32_t first = 0x01020304;
    const std::uint16_t second = 0xFFFF;
    const std::uint8_t third = 0xFF;
    writer(first, second, third);
    EXPECT_EQ(writer.Written(), 0U);
    EXPECT_EQ(buffer[4] | buffer[5], 0);
}

TEST(ReceivedText, EndsWhereItsCountSaysAndIsClosedThere) {
    Bytes image = {3, 0, 0, 0, 'a', 0, 0, 0, 'c', 0, 0xFF, 0xFF, 9, 0, 0, 0};
    ErrorTextMessage message;
    EXPECT_EQ(message.Restore(image.data(), static_cast<std::int32_t>(image.size())), 16);
    EXPECT_EQ(message.text, CString(L"a\0c", 3)); // a zero inside is part of it
    EXPECT_EQ(message.result, 9);
    EXPECT_EQ(image[10] | image[11], 0);
}

TEST(DataRuns, PointIntoTheReceivedBuffer) {
    Bytes image = SavedMessage(Filled<AVDataMessage>());
    AVDataMessage message;
    message.Restore(image.data(), static_cast<std::int32_t>(image.size()));
    EXPECT_EQ(message.data1, image.data() + 5);
    EXPECT_EQ(message.data2, image.data() + 11);
}

TEST(DataRuns, WithoutDataTravelAsTheirLengthAlone) {
    AVDataMessage message = Filled<AVDataMessage>();
    message.data1 = nullptr;
    EXPECT_EQ(message.Size(), 17 + 2 + 3);
    Bytes image = SavedMessage(message);
    EXPECT_EQ(image.size(), 17U + 3);
    EXPECT_EQ(image[1], 2); // the length stays
    EXPECT_EQ(RestoreFromExact(message, image), 0);

    BufferMessage buffer;
    buffer.length = 3;
    EXPECT_EQ(SavedMessage(buffer).size(), 12U);
    EXPECT_EQ(buffer.Size(), 15);

    image = SavedMessage(BufferMessage());
    buffer = Filled<BufferMessage>();
    EXPECT_EQ(RestoreFromExact(buffer, image), 12);
    EXPECT_EQ(buffer.data, nullptr);
}

TEST(Icon, CarriesItsSizeWithoutPixelsToo) {
    IconMessage message = Filled<IconMessage>();
    message.bits = nullptr;
    const Bytes image = SavedMessage(message);
    EXPECT_EQ(message.Size(), 8 + 8 + 8 + 4);
    EXPECT_EQ(std::ssize(image), message.Size());
    IconMessage restored = Filled<IconMessage>();
    EXPECT_EQ(RestoreFromExact(restored, image), message.Size());
    EXPECT_EQ(restored.bits, nullptr);
    EXPECT_EQ(restored.size.cx, 2);
    EXPECT_EQ(restored.result, 1);
}

TEST(Icon, WithoutAreaHasNoPixels) {
    constexpr struct {
        tagSIZE size;
        std::int32_t bytes; ///< Size()
    } kRows[] = {
        {{0, 5}, 24},
        {{-2, 1}, 24},
        {{-2, -1}, 24 + 6}, // two signs cancel out
        {{kLargest, kLargest}, kLargest},
        {{-kLargest - 1, -kLargest - 1}, kLargest},
    };
    for (const auto& row : kRows) {
        IconMessage message{{}, L"", L"", row.size, kPixels, 0};
        EXPECT_EQ(message.Size(), row.bytes);
        unsigned char buffer[30] = {};
        // The largest have more pixels than any buffer: nothing may be read or written.
        const std::int32_t written = message.Save(buffer, row.bytes);
        EXPECT_EQ(written, row.bytes == kLargest ? 0 : row.bytes);
        std::memcpy(buffer + 12, &row.size, sizeof(row.size));
        EXPECT_EQ(message.Restore(buffer, sizeof(buffer)), written);
    }
}

} // namespace
} // namespace nqp2::bridge
