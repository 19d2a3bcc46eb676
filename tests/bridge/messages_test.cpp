// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/messages.h"

#include "NQP2ParserU/ClipListRecords.h"
#include "tests/bridge/wire_example.h"
#include "tests/support/print_text.h"

#include <array>
#include <bit>
#include <cstring>
#include <gtest/gtest.h>
#include <initializer_list>
#include <limits>
#include <memory>
#include <numeric>
#include <tuple>
#include <type_traits>

namespace nqp2::bridge {
namespace {

constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
constexpr unsigned char kUntouched = 0xCC;

GUID GuidFrom(unsigned char first) {
    std::array<unsigned char, sizeof(GUID)> bytes;
    std::iota(bytes.begin(), bytes.end(), first);
    return std::bit_cast<GUID>(bytes);
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

constexpr std::uint64_t kHigh = 0x100000000; ///< makes a number need its upper half

// clang-format off
/// All in declared order, which is not that of the wire.
stu_R8P2TransInfo TransInfo() {
    return {L"A", L"", L"Bb", 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11,
            kHigh + 1, 12, 13, kHigh + 2, 14, 1,
            {{0xA1, L"T", 0xA2}}, 16,
            {{0xB1, L"I", 0xB2}, 0xB3, 0xB4, 0xB5, GuidFrom(0x30)}, 17,
            kHigh + 3, kHigh + 4, kHigh + 5, kHigh + 6, RelatedClips(), 18, L"D",
            {1}, {2}, 19, 20,
            {3}, {4}, {5}, {6}, {7},
            {{}, {}, {}, {}, {}, {}, {}, {}, {0xC1, L"U", 0xC2}}, 21, L"E", 22};
}

NQP2BaseClipInfo BaseClipInfo() {
    return {L"c", GuidFrom(0x40), L"d", 2 * kHigh + 1, 2 * kHigh + 2, 2 * kHigh + 3,
            L"DVSD", L"x", L"", L"z", ListOf<CString>({L"m", L""}), L"e", -5};
}

RewrapRequest RewrapExample() {
    return {L"T", RewrapContainer::Mkv, RewrapJoin::Frames, true, L"c", {30000, 1001}, false,
            16, 9, L"t", L"", L"r", L"d",
            ListOf<RewrapPart>({{L"n", L"v", ListOf<CString>({L"a"}), 5, 6, 7}}),
            ListOf<RewrapChapter>({{8, L"x"}})};
}
// clang-format on

constexpr unsigned char kData[] = {0x11, 0x22, 0x33, 0x44, 0x55};
constexpr unsigned char kPixels[] = {1, 2, 3, 4, 5, 6};

/// A message and the heading of its documented bytes.
template <class Message>
struct Documented {
    const char* heading;
    Message message;
};
template <class Message>
Documented(const char*, Message) -> Documented<Message>;

// clang-format off
const auto& Examples() {
    static const std::tuple kExamples{
        Documented{"20002", SystemTypeMessage{{}, 4, 1}},
        Documented{"20003, 20018", ResultMessage{{}, 1}},
        Documented{"20004", ProgressMessage{{}, 0x10, 0x20, 1, 0}},
        Documented{"20005", ImportFileMessage{{}, TransInfo(), 1}},
        Documented{"20006", UploadOffsetMessage{{}, 0x80000001U, 2, 1}},
        Documented{"20007", ExportFileMessage{{}, TransInfo(), ListOf<CString>({L"n1", L""}), 1}},
        // One character beyond 16 bits, one surrogate alone.
        Documented{"20008, 20015, 20019", TextPairMessage{{}, L"ab", L"\x1F3A5\xD800", 1}},
        Documented{"20009, 20011, 20017, 20021", ValueMessage{{}, -2, 1}},
        Documented{"20010", RTExportParamMessage{
            {}, 0x20, {40, 1920, -1080, 1, 24, 0, 0, 0, 0, 0, 0}, {1, 2, 48000, 192000, 4, 16, 0},
            {-1, 0, 1, 2, 3, 4, 5, 6}, L"a", L"", L"c", 0x71, RelatedClips(), -3, 0x73, 1}},
        Documented{"20012", StopRTExportMessage{{}, 1, -1, 1}},
        Documented{"20013", BufferMessage{{}, 7, 1, kData, 3}},
        Documented{"20014", AVDataMessage{{}, 2, kData, 2, kData + 2, 3, 1, 1}},
        Documented{"20016", IconMessage{{}, L"a", L"b", {2, 1}, kPixels, 1}},
        Documented{"20020, 21000", ErrorTextMessage{{}, L"no", 1}},
        Documented{"21001", PicturesMessage{{}, ListOf<CString>({L"a"}), {0xA0, 0x78},
            ListOf<PictureRecord>({{L"", kData, 3}, {L"n", nullptr, 0}}), 1}},
        Documented{"21002", MediaMessage{{}, L"P",
            ListOf<TrackMetadata>({{L"audio", L"AC-3", L"", L"f"}}),
            ListOf<MetadataText>({{L"Tags/a", L"b"}}), 1, 1}},
        Documented{"21003", RewrapMessage{{}, RewrapExample(), {kHigh + 1, 10, kHigh + 11, 12,
            ListOf<CString>({L"m"})}, 0, 1}},
        Documented{"20022", BaseClipInfoMessage{{}, L"P", BaseClipInfo(), 1}},
        Documented{"50, 51", ConnectionRecord{{}, 10240, 20480, 0xFFFFFFFF, 5000}},
    };
    return kExamples;
}
// clang-format on

/// Runs `check(message, its documented example)` for each kind of message.
template <class Check>
void ForEach(Check check) {
    const auto run = [&](const auto& each) {
        SCOPED_TRACE(each.heading);
        check(each.message, ReadWireExample(each.heading));
    };
    std::apply([&](const auto&... each) { (run(each), ...); }, Examples());
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

TEST(Messages, HaveTheDocumentedBytesAndIgnoreWhatFollows) {
    ForEach([](const auto& message, const WireExample& example) {
        EXPECT_EQ(SavedMessage(message), example.bytes);
        Bytes longer = example.bytes;
        longer.resize(longer.size() + 32, kUntouched);
        std::remove_cvref_t<decltype(message)> restored;
        EXPECT_EQ(restored.Restore(longer.data(), static_cast<std::int32_t>(longer.size())),
                  std::ssize(example.bytes));
        EXPECT_EQ(SavedMessage(restored), example.bytes);
    });
    const Bytes empty = SavedMessage(ImportFileMessage());
    EXPECT_EQ(std::count(empty.begin(), empty.end(), 0), std::ssize(empty) - 1) << "value 15 is 1";
}

TEST(Messages, RestoreNothingFromACutImageOrACountBeyondTheBuffer) {
    ForEach([](auto message, const WireExample& example) { // a copy, which stays as it is
        const Bytes& image = example.bytes;
        // An icon cut off just there is one without pixels.
        const std::size_t end =
            std::is_same_v<decltype(message), IconMessage> ? image.size() - 6 : image.size();
        for (std::size_t length = 0; length < image.size(); ++length) {
            const Bytes cut(image.begin(), image.begin() + static_cast<long>(length));
            EXPECT_TRUE(length == end || RestoreFromExact(message, cut) == 0) << length;
        }
        for (const std::size_t at : example.counts) {
            const auto left = static_cast<std::uint32_t>(image.size() - at - 4);
            for (const std::uint32_t count : {0xFFFFFFFFU, 0x80000000U, 0x7FFFFFFFU, left + 1}) {
                Bytes wrong = image;
                std::memcpy(&wrong.at(at), &count, sizeof(count));
                EXPECT_EQ(RestoreFromExact(message, wrong), 0) << count << " at " << at;
            }
        }
        EXPECT_EQ(message.Restore(nullptr, kLargest), 0);
        EXPECT_EQ(SavedMessage(message), image);
    });
}

TEST(Messages, WriteNothingIntoLessThanTheyNeedOrClaim) {
    // The size figure leaves out the tables, 18 entries with two units of text, and three numbers.
    constexpr std::int32_t kUncounted = 18 * 14 + 2 * 2 + 12;
    ForEach([](const auto& message, const WireExample& example) {
        const bool isTransfer = requires {
            message.info.taggedTexts1;
        };
        const auto needed = static_cast<std::int32_t>(example.bytes.size());
        EXPECT_EQ(message.Size(), needed - (isTransfer ? kUncounted : 0));
        for (const std::int32_t capacity : {-1, 0, message.Size() - 1, needed - 1}) {
            Bytes buffer(4096, kUntouched);
            EXPECT_EQ(message.Save(buffer.data(), capacity), 0) << capacity;
            EXPECT_EQ(buffer, Bytes(4096, kUntouched));
        }
        EXPECT_EQ(message.Save(nullptr, kLargest), 0);
        const auto exact = std::make_unique<unsigned char[]>(example.bytes.size());
        EXPECT_EQ(message.Save(exact.get(), needed), needed);
    });
}

TEST(Messages, CarryDataThatAreMissingAndNoneThatNoBufferHolds) {
    AVDataMessage data = std::get<Documented<AVDataMessage>>(Examples()).message;
    data.data1 = nullptr; // its length stays
    EXPECT_EQ(SavedMessage(data).size(), 17U + 3);
    EXPECT_EQ(RestoreFromExact(data, SavedMessage(data)), 0);
    IconMessage restored = std::get<Documented<IconMessage>>(Examples()).message;
    IconMessage message = restored;
    message.bits = nullptr;
    EXPECT_EQ(RestoreFromExact(restored, SavedMessage(message)), message.Size());
    EXPECT_EQ(restored.bits, nullptr);
    EXPECT_EQ(PixelBytes({0, 5}) + PixelBytes({-2, 1}), 0U);
    message.size = {kLargest, kLargest}; // nothing is read or written
    message.bits = kPixels;
    EXPECT_EQ(message.Size(), kLargest);
    EXPECT_EQ(SavedMessage(message), Bytes());
}

// Records that hosts exchange. Whatever else their images hold: fuzz target bridge_messages.

template <class Record>
Bytes SavedRecord(const Record& record) {
    Bytes bytes(static_cast<std::size_t>(record.GetSize()));
    unsigned char* at = bytes.data();
    EXPECT_EQ(record.SaveToBuf(at), std::ssize(bytes));
    EXPECT_EQ(at, bytes.data() + bytes.size());
    return bytes;
}

/// `Length` is nothing, or the number of bytes.
template <class Record, class... Length>
Record RestoredRecord(Bytes image, Length... length) {
    Record record;
    unsigned char* at = image.data();
    EXPECT_EQ(record.RestoreFromBuf(at, length...), std::ssize(image));
    EXPECT_EQ(at, image.data() + image.size());
    return record;
}

TEST(ExchangedRecords, HaveTheDocumentedBytesAndMoveThePointer) {
    const _BLCLIP clip = {L"a", L"b", L"c", L"d", L"e", L"f", -1,  -2,   -3,  -4,  -5,  -6,
                          -7,   -8,   -9,   L"g", L"",  L"i", -10, L"j", -11, -12, -13, L"kk"};
    const Bytes image = ReadWireExample("_BLCLIP").bytes;
    EXPECT_EQ(SavedRecord(clip), image);
    Bytes open = image;
    open[6] = 0xFF; // the terminator of text 1: the count overrules it
    const auto length = static_cast<std::int32_t>(image.size());
    EXPECT_EQ(SavedRecord(RestoredRecord<_BLCLIP>(open)), image);
    EXPECT_EQ(SavedRecord(RestoredRecord<_BLCLIP>(open, length)), image);
    const Bytes point = ReadWireExample("_NQBRDBROKENPOINT").bytes;
    EXPECT_EQ(SavedRecord(_NQBRDBROKENPOINT{5, -6}), point);
    EXPECT_EQ(SavedRecord(RestoredRecord<_NQBRDBROKENPOINT>(point)), point);

    const Bytes format = ReadWireExample("tag_NQFileFormatEx").bytes;
    tag_NQFileFormatEx restored;
    std::uint32_t count = 0;
    EXPECT_EQ(NQ_RestoreFileFormatData(format.data(), restored, &count), 1);
    EXPECT_EQ(count, 64U);
    Bytes saved(static_cast<std::size_t>(NQ_GetFileFormatDataSize(restored)));
    EXPECT_EQ(NQ_SaveFileFormatData(saved.data(), restored, nullptr), 1);
    EXPECT_EQ(saved, format);
}

} // namespace
} // namespace nqp2::bridge
