// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/messages.h"

#include "tests/bridge/wire_example.h"
#include "tests/support/print_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <vector>

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

CArray<stu_R8PRelationClipInfo> RelatedClips() {
    CArray<stu_R8PRelationClipInfo> clips;
    clips.Add({0x61, 0x62, 0x63, GuidFrom(0x10), GuidFrom(0x20), L"p", L"", L"q"});
    return clips;
}

// The examples' content, message by message.

void Fill(stu_R8P2TransInfo& info) {
    info.text1 = L"A";
    info.text3 = L"Bb";
    info.text4 = L"D";
    info.text5 = L"E";
    std::uint32_t* const numbers[] = {
        &info.value1,  &info.value2,  &info.value3,  &info.value4,  &info.value5,  &info.value6,
        &info.value7,  &info.value8,  &info.value9,  &info.value10, &info.value11, &info.value12,
        &info.value13, &info.value14, nullptr,       &info.value16, &info.value17, &info.value18,
        &info.value19, &info.value20, &info.value21, &info.value22};
    std::uint64_t* const sizes[] = {&info.size1, &info.size2, &info.size3,
                                    &info.size4, &info.size5, &info.size6};
    tag_NQFileFormatEx* const formats[] = {&info.format1, &info.format2, &info.format3,
                                           &info.format4, &info.format5, &info.format6,
                                           &info.format7};
    for (std::uint32_t i = 0; i < std::size(numbers); ++i) {
        if (numbers[i] != nullptr) { // value 15 keeps what it starts as
            *numbers[i] = i + 1;
        }
    }
    for (std::uint32_t i = 0; i < std::size(sizes); ++i) {
        *sizes[i] = 0x100000001U + i;
    }
    for (std::uint32_t i = 0; i < std::size(formats); ++i) {
        formats[i]->fileType = i + 1;
    }
    info.taggedTexts1[0] = {0xA1, L"T", 0xA2};
    info.describedIdentifier = {{0xB1, L"I", 0xB2}, 0xB3, 0xB4, 0xB5, GuidFrom(0x30)};
    info.relatedClips = RelatedClips();
    info.taggedTexts2[8] = {0xC1, L"U", 0xC2};
}

void Fill(SystemTypeMessage& message) {
    message.standard = 4;
}

void Fill(ResultMessage& /*message*/) {}

void Fill(ProgressMessage& message) {
    message.position = 0x10;
    message.total = 0x20;
    message.abort = 1;
}

void Fill(ImportFileMessage& message) {
    Fill(message.info);
}

void Fill(UploadOffsetMessage& message) {
    message.first = 0x80000001U;
    message.second = 2;
}

void Fill(ExportFileMessage& message) {
    Fill(message.info);
    message.names.Add(L"n1");
    message.names.Add(L"");
}

void Fill(TextPairMessage& message) {
    message.first = L"ab";
    message.second = L"\x1F3A5\xD800"; // one beyond 16 bits, one surrogate alone
}

void Fill(ValueMessage& message) {
    message.value = -2;
}

void Fill(RTExportParamMessage& message) {
    message.codeType = 0x20;
    message.bitmap.biWidth = 1920;
    message.bitmap.biHeight = -1080;
    message.bitmap.biBitCount = 24;
    message.wave = {1, 2, 48000, 192000, 4, 16, 0};
    for (std::int32_t i = 0; i < 8; ++i) {
        message.numbers[i] = i - 1;
    }
    message.text1 = L"a";
    message.text3 = L"c";
    message.value1 = 0x71;
    message.relatedClips = RelatedClips();
    message.value2 = -3;
    message.value3 = 0x73;
}

void Fill(StopRTExportMessage& message) {
    message.first = 1;
    message.second = -1;
}

void Fill(BufferMessage& message) {
    static constexpr unsigned char kData[] = {0x11, 0x22, 0x33};
    message.value = 7;
    message.data = kData;
    message.length = sizeof(kData);
}

void Fill(AVDataMessage& message) {
    static constexpr unsigned char kData[] = {0x11, 0x22, 0x33, 0x44, 0x55};
    message.streamType = 2;
    message.data1 = kData;
    message.length1 = 2;
    message.data2 = kData + 2;
    message.length2 = 3;
    message.flag = 1;
}

void Fill(IconMessage& message) {
    static constexpr unsigned char kPixels[] = {1, 2, 3, 4, 5, 6};
    message.first = L"a";
    message.second = L"b";
    message.size = {2, 1};
    message.bits = kPixels;
}

void Fill(ErrorTextMessage& message) {
    message.text = L"no";
}

void Fill(BaseClipInfoMessage& message) {
    message.path = L"P";
    NQP2BaseClipInfo& info = message.info;
    info.clipText1 = L"c";
    info.identifier = GuidFrom(0x40);
    info.clipText2 = L"d";
    info.value1 = 0x200000001;
    info.value2 = 0x200000002;
    info.value3 = 0x200000003;
    info.codec = L"DVSD";
    info.text1 = L"x";
    info.text3 = L"z";
    info.texts.Add(L"m");
    info.texts.Add(L"");
    info.clipText3 = L"e";
    info.value4 = -5;
}

template <class Message>
Message Filled() {
    Message message;
    Fill(message);
    if constexpr (requires { message.result; }) {
        message.result = 1;
    }
    return message;
}

/// The message's bytes, saved to a buffer far larger than needed.
template <class Message>
Bytes Saved(const Message& message) {
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
    for (const MessageId id : Message::kIds) {
        title += (title.empty() ? "" : ", ") + std::to_string(Number(id));
    }
    return ReadWireExample(title);
}

template <class Message>
class EachMessage : public testing::Test {};
using Messages =
    testing::Types<SystemTypeMessage, ResultMessage, ProgressMessage, ImportFileMessage,
                   UploadOffsetMessage, ExportFileMessage, TextPairMessage, ValueMessage,
                   RTExportParamMessage, StopRTExportMessage, BufferMessage, AVDataMessage,
                   IconMessage, ErrorTextMessage, BaseClipInfoMessage>;
TYPED_TEST_SUITE(EachMessage, Messages);

TYPED_TEST(EachMessage, HasTheDocumentedBytes) {
    EXPECT_EQ(Saved(Filled<TypeParam>()), Example<TypeParam>().bytes);
}

TYPED_TEST(EachMessage, RestoresWhatWasSavedAndIgnoresWhatFollows) {
    const Bytes image = Example<TypeParam>().bytes;
    Bytes longer = image;
    longer.resize(image.size() + 32, kUntouched);
    TypeParam message;
    EXPECT_EQ(message.Restore(longer.data(), static_cast<std::int32_t>(longer.size())),
              std::ssize(image));
    EXPECT_EQ(Saved(message), image);
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
        EXPECT_EQ(Saved(message), read == 0 ? image : cut) << length;
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
            EXPECT_EQ(Saved(message), example.bytes);
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
    stu_R8P2TransInfo info;
    Fill(info);
    // Texts 1 to 4; described identifier; numbers; a related clip; sizes; formats; numbers; text 5.
    constexpr std::int32_t kFigure =
        2 * (2 + 1 + 3 + 2) + 44 + 92 + (4 + 66) + 36 + 7 * 64 + 8 + 2 * 2 + 8;
    // The tables, of 18 entries with two units of text, and three numbers.
    constexpr std::int32_t kUncounted = 18 * 14 + 2 * 2 + 12;
    EXPECT_EQ(Filled<ImportFileMessage>().Size(), kFigure + 4);
    EXPECT_EQ(std::ssize(Saved(Filled<ImportFileMessage>())), kFigure + kUncounted + 4);
    EXPECT_EQ(Filled<ExportFileMessage>().Size(), kFigure + (4 + 10 + 6) + 4);
    EXPECT_EQ(Filled<TextPairMessage>().Size(), 10 + 12 + 4); // units, not code points
    EXPECT_EQ(RTExportParamMessage().Size(), 4 + 40 + 18 + 32 + 3 * 6 + 4 + 4 + 4 + 4 + 4);
}

TEST(TransferRecord, StartsEmptyButForValue15) {
    ImportFileMessage restored = Filled<ImportFileMessage>();
    Bytes image = Saved(ImportFileMessage());
    ASSERT_EQ(restored.Restore(image.data(), static_cast<std::int32_t>(image.size())),
              std::ssize(image));
    EXPECT_EQ(restored.info.value15, 1U);
    EXPECT_EQ(restored.info.relatedClips.GetSize(), 0);
    EXPECT_EQ(std::count(image.begin(), image.end(), 0), std::ssize(image) - 1);
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
    Bytes image = Saved(Filled<AVDataMessage>());
    AVDataMessage message;
    message.Restore(image.data(), static_cast<std::int32_t>(image.size()));
    EXPECT_EQ(message.data1, image.data() + 5);
    EXPECT_EQ(message.data2, image.data() + 11);
}

TEST(DataRuns, WithoutDataTravelAsTheirLengthAlone) {
    AVDataMessage message = Filled<AVDataMessage>();
    message.data1 = nullptr;
    EXPECT_EQ(message.Size(), 17 + 2 + 3);
    Bytes image = Saved(message);
    EXPECT_EQ(image.size(), 17U + 3);
    EXPECT_EQ(image[1], 2); // the length stays
    EXPECT_EQ(RestoreFromExact(message, image), 0);

    BufferMessage buffer;
    buffer.length = 3;
    EXPECT_EQ(Saved(buffer).size(), 12U);
    EXPECT_EQ(buffer.Size(), 15);

    image = Saved(BufferMessage());
    buffer = Filled<BufferMessage>();
    EXPECT_EQ(RestoreFromExact(buffer, image), 12);
    EXPECT_EQ(buffer.data, nullptr);
}

TEST(Icon, CarriesItsSizeWithoutPixelsToo) {
    IconMessage message = Filled<IconMessage>();
    message.bits = nullptr;
    const Bytes image = Saved(message);
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
    constexpr unsigned char kPixels[6] = {};
    for (const auto& row : kRows) {
        IconMessage message;
        message.size = row.size;
        message.bits = kPixels;
        EXPECT_EQ(message.Size(), row.bytes);
        unsigned char buffer[30];
        // The largest have more pixels than any buffer: nothing may be read or written.
        const std::int32_t written = message.Save(buffer, row.bytes);
        EXPECT_EQ(written, row.bytes == kLargest ? 0 : row.bytes);
        EXPECT_EQ(IconMessage(message).Restore(buffer, written), written);
    }
}

TEST(Icon, OfAHugeSizeIsNotLookedFor) {
    Bytes image = Saved(Filled<IconMessage>());
    for (const std::uint32_t side : {0x7FFFFFFFU, 0x80000000U}) {
        SetCount(image, 16, side);
        SetCount(image, 20, side);
        IconMessage message;
        EXPECT_EQ(RestoreFromExact(message, image), 0);
    }
}

} // namespace
} // namespace nqp2::bridge
