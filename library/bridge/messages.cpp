// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/messages.h"

#include "bridge/record_layouts.h"
#include "bridge/wire.h"
#include "platform/guard.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace nqp2::bridge {
namespace {

// The fields of each message in wire order.

template <class Archive, RecordOf<SystemTypeMessage> Self>
void Describe(Archive& archive, Self& message) {
    archive(message.standard, message.result);
}

template <class Archive, RecordOf<ResultMessage> Self>
void Describe(Archive& archive, Self& message) {
    archive(message.result);
}

template <class Archive, RecordOf<ProgressMessage> Self>
void Describe(Archive& archive, Self& message) {
    archive(message.position, message.total, message.abort, message.spare);
}

template <class Archive, RecordOf<ImportFileMessage> Self>
void Describe(Archive& archive, Self& message) {
    archive(message.info, message.result);
}

template <class Archive, RecordOf<UploadOffsetMessage> Self>
void Describe(Archive& archive, Self& message) {
    archive(message.first, message.second, message.result);
}

template <class Archive, RecordOf<ExportFileMessage> Self>
void Describe(Archive& archive, Self& message) {
    archive(message.info, message.names, message.result);
}

template <class Archive, RecordOf<TextPairMessage> Self>
void Describe(Archive& archive, Self& message) {
    archive(message.first, message.second, message.result);
}

template <class Archive, RecordOf<ValueMessage> Self>
void Describe(Archive& archive, Self& message) {
    archive(message.value, message.result);
}

template <class Archive, RecordOf<RTExportParamMessage> Self>
void Describe(Archive& archive, Self& message) {
    archive(message.codeType, message.bitmap, message.wave, message.numbers);
    archive(message.text1, message.text2, message.text3, message.value1);
    archive(message.relatedClips, message.value2, message.value3, message.result);
}

template <class Archive, RecordOf<StopRTExportMessage> Self>
void Describe(Archive& archive, Self& message) {
    archive(message.first, message.second, message.result);
}

template <class Archive, RecordOf<BufferMessage> Self>
void Describe(Archive& archive, Self& message) {
    archive(message.value, message.result);
    archive.Run(message.data, message.length);
}

template <class Archive, RecordOf<AVDataMessage> Self>
void Describe(Archive& archive, Self& message) {
    archive(message.streamType);
    archive.Run(message.data1, message.length1);
    archive.Run(message.data2, message.length2);
    archive(message.flag, message.result);
}

template <class Archive, RecordOf<IconMessage> Self>
void Describe(Archive& archive, Self& message) {
    archive(message.first, message.second, message.size.cx, message.size.cy);
    archive.OptionalBytes(message.bits, PixelBytes(message.size), sizeof(message.result));
    archive(message.result);
}

template <class Archive, RecordOf<ErrorTextMessage> Self>
void Describe(Archive& archive, Self& message) {
    archive(message.text, message.result);
}

template <class Archive, RecordOf<BaseClipInfoMessage> Self>
void Describe(Archive& archive, Self& message) {
    archive(message.path, message.info, message.result);
}

template <class Archive, RecordOf<PicturesMessage> Self>
void Describe(Archive& archive, Self& message) {
    archive(message.paths, message.bounds.cx, message.bounds.cy, message.pictures);
    archive(message.result);
}

template <class Archive, RecordOf<MediaMessage> Self>
void Describe(Archive& archive, Self& message) {
    archive(message.path, message.tracks, message.texts, message.isCut, message.result);
}

template <class Archive, RecordOf<RewrapMessage> Self>
void Describe(Archive& archive, Self& message) {
    archive(message.request, message.written, message.isCancelled, message.result);
}

template <class Archive, RecordOf<ConnectionRecord> Self>
void Describe(Archive& archive, Self& record) {
    archive(record.sendSize, record.receiveSize, record.sendTimeout, record.receiveTimeout);
}

template <class Message>
SizeCounter Counted(const Message& message) {
    SizeCounter counter;
    Describe(counter, message);
    return counter;
}

/// What a buffer must hold for the message to be written at all.
template <class Message>
std::uint64_t RoomFor(const Message& message) {
    const SizeCounter counter = Counted(message);
    return std::max(counter.Figure(), counter.Image());
}

template <class Message>
std::int32_t SaveTo(unsigned char* buffer, std::int32_t capacity, const Message& message) {
    if (buffer == nullptr || capacity < 0 ||
        static_cast<std::uint64_t>(capacity) < RoomFor(message)) {
        return 0;
    }
    WireWriter writer(buffer, static_cast<std::uint64_t>(capacity));
    Describe(writer, message);
    return static_cast<std::int32_t>(writer.Written());
}

template <class Message>
std::int32_t RestoreFrom(unsigned char* buffer, std::int32_t length, Message& message) {
    if (buffer == nullptr || length < 0) {
        return 0;
    }
    WireReader reader(buffer, static_cast<std::uint64_t>(length));
    Message restored;
    Describe(reader, restored);
    if (reader.Read() > 0) {
        message = std::move(restored);
    }
    return static_cast<std::int32_t>(reader.Read());
}

} // namespace

std::uint64_t PixelBytes(const tagSIZE& size) {
    constexpr std::uint64_t kBytesPerPixel = 3;
    const std::int64_t area = std::int64_t{size.cx} * size.cy;
    return area > 0 ? kBytesPerPixel * static_cast<std::uint64_t>(area) : 0;
}

template <class Message>
std::int32_t WireMessage<Message>::Size() const {
    constexpr std::uint64_t kMost = std::numeric_limits<std::int32_t>::max();
    const std::uint64_t figure = Counted(static_cast<const Message&>(*this)).Figure();
    return static_cast<std::int32_t>(std::min(figure, kMost));
}

template <class Message>
std::int32_t WireMessage<Message>::Save(unsigned char* buffer, std::int32_t capacity) const {
    return platform::Guarded(
        0, [&] { return SaveTo(buffer, capacity, static_cast<const Message&>(*this)); });
}

template <class Message>
std::int32_t WireMessage<Message>::Restore(unsigned char* buffer, std::int32_t length) {
    return platform::Guarded(
        0, [&] { return RestoreFrom(buffer, length, static_cast<Message&>(*this)); });
}

template struct WireMessage<SystemTypeMessage>;
template struct WireMessage<ResultMessage>;
template struct WireMessage<ProgressMessage>;
template struct WireMessage<ImportFileMessage>;
template struct WireMessage<UploadOffsetMessage>;
template struct WireMessage<ExportFileMessage>;
template struct WireMessage<TextPairMessage>;
template struct WireMessage<ValueMessage>;
template struct WireMessage<RTExportParamMessage>;
template struct WireMessage<StopRTExportMessage>;
template struct WireMessage<BufferMessage>;
template struct WireMessage<AVDataMessage>;
template struct WireMessage<IconMessage>;
template struct WireMessage<ErrorTextMessage>;
template struct WireMessage<BaseClipInfoMessage>;
template struct WireMessage<PicturesMessage>;
template struct WireMessage<MediaMessage>;
template struct WireMessage<RewrapMessage>;
template struct WireMessage<ConnectionRecord>;

} // namespace nqp2::bridge
