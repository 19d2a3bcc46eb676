// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/message_ids.h"
#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/CStringArray.h"
#include "NQP2ParserU/MediaHeaders.h"
#include "NQP2ParserU/NQP2BaseClipInfo.h"
#include "NQP2ParserU/R8P2TransInfo.h"

#include <cstdint>

/// One record for each kind of message, used for request and reply alike. The bytes: docs/wire.md.
namespace nqp2::bridge {

/// What all messages can do. Which fields travel, and in which order, is described once for each
/// message in messages.cpp; all three operations follow from that.
template <class Message>
struct WireMessage {
    /// Bytes that a buffer must have for Save. More than 2 GiB count as the largest number. A
    /// transfer record's image is longer than this says, a data run without data shorter.
    [[nodiscard]] std::int32_t Size() const;
    /// Writes the image and returns its length; 0, and nothing written, when the buffer is null or
    /// when `capacity` is below Size() or below the image's length. 0 also when memory gives out.
    std::int32_t Save(unsigned char* buffer, std::int32_t capacity) const;
    /// Reads an image and returns its length, which may be less than `length`. 0, and the record
    /// unchanged, when the buffer is null or does not hold a whole image, or when memory gives out.
    /// The buffer may be rewritten by a peer meanwhile; the unit behind each text in it becomes 0.
    std::int32_t Restore(unsigned char* buffer, std::int32_t length);
};

/// The rate family of the system.
struct SystemTypeMessage : WireMessage<SystemTypeMessage> {
    static constexpr MessageId kIds[] = {MessageId::SetSystemType};
    std::int32_t standard = 0; ///< eP2_VIDEO_STANDARD
    std::int32_t result = 0;
};

/// A request without arguments.
struct ResultMessage : WireMessage<ResultMessage> {
    static constexpr MessageId kIds[] = {MessageId::RegisterProgress, MessageId::CloseAllFile};
    std::int32_t result = 0;
};

/// How far a transfer got; the answer carries the host's wish to abort.
struct ProgressMessage : WireMessage<ProgressMessage> {
    static constexpr MessageId kIds[] = {MessageId::Progress};
    std::uint32_t position = 0;
    std::uint32_t total = 0;
    std::int32_t abort = 0;
    std::uint32_t spare = 0;
};

struct ImportFileMessage : WireMessage<ImportFileMessage> {
    static constexpr MessageId kIds[] = {MessageId::ImportFile};
    stu_R8P2TransInfo info;
    std::int32_t result = 0;
};

struct UploadOffsetMessage : WireMessage<UploadOffsetMessage> {
    static constexpr MessageId kIds[] = {MessageId::GetUploadOffset};
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    std::int32_t result = 0;
};

struct ExportFileMessage : WireMessage<ExportFileMessage> {
    static constexpr MessageId kIds[] = {MessageId::ExportFile};
    stu_R8P2TransInfo info;
    CStringArray names;
    std::int32_t result = 0;
};

struct TextPairMessage : WireMessage<TextPairMessage> {
    static constexpr MessageId kIds[] = {MessageId::DeleteFile, MessageId::UnusedTexts,
                                         MessageId::GetP2SerialNumber};
    CString first;
    CString second;
    std::int32_t result = 0;
};

struct ValueMessage : WireMessage<ValueMessage> {
    static constexpr MessageId kIds[] = {MessageId::UnusedValue, MessageId::StartRTExport,
                                         MessageId::SetWriteBlockSize,
                                         MessageId::SetRTExportExtraParam};
    std::int32_t value = 0; ///< StartRTExport's is unsigned: the same 32 bits
    std::int32_t result = 0;
};

/// Format of the stream and the target of a real-time export.
struct RTExportParamMessage : WireMessage<RTExportParamMessage> {
    static constexpr MessageId kIds[] = {MessageId::SetRTExportParam};
    std::int32_t codeType = 0; ///< eCodeType
    BITMAPINFOHEADER bitmap;
    WAVEFORMATEX wave;
    std::int32_t numbers[8] = {};
    CString text1;
    CString text2;
    CString text3;
    std::uint32_t value1 = 0;
    CArray<stu_R8PRelationClipInfo> relatedClips;
    std::int32_t value2 = 0;
    std::uint32_t value3 = 0;
    std::int32_t result = 0;
};

struct StopRTExportMessage : WireMessage<StopRTExportMessage> {
    static constexpr MessageId kIds[] = {MessageId::StopRTExport};
    std::int32_t first = 0;
    std::int32_t second = 0;
    std::int32_t result = 0;
};

/// A value to the worker, a data block back.
struct BufferMessage : WireMessage<BufferMessage> {
    static constexpr MessageId kIds[] = {MessageId::AddRTExportAVDataForBuf};
    /// Bytes of a frame of 1920 x 1080 with two bytes a pixel: for that much a proxy has room at
    /// once, and our worker gives no more.
    static constexpr std::int32_t kFrameBytes = 1920 * 1080 * 2;
    std::int32_t value = 0;
    std::int32_t result = 0;
    const unsigned char* data = nullptr; ///< not owned; restored: in the received buffer, or null
    std::uint32_t length = 0;            ///< bytes
};

/// Video and audio of a running export.
struct AVDataMessage : WireMessage<AVDataMessage> {
    static constexpr MessageId kIds[] = {MessageId::AddRTExportAVData};
    std::uint8_t streamType = 0;
    const unsigned char* data1 = nullptr; ///< not owned; restored: in the received buffer, or null
    std::uint32_t length1 = 0;            ///< bytes; travels also without data
    const unsigned char* data2 = nullptr; ///< as data1
    std::uint32_t length2 = 0;
    std::int32_t flag = 0;
    std::int32_t result = 0;
};

/// A picture of 24-bit pixels without row padding.
struct IconMessage : WireMessage<IconMessage> {
    static constexpr MessageId kIds[] = {MessageId::CreateIconBmp};
    CString first;
    CString second;
    tagSIZE size;                        ///< travels also without pixels
    const unsigned char* bits = nullptr; ///< not owned; restored: in the received buffer, or null
    std::int32_t result = 0;
};

/// Bytes of an icon's pixels: none without area; two negative sides have one.
std::uint64_t PixelBytes(const tagSIZE& size);

/// A text of the worker's: its last failure, or clips' names, one on each line.
struct ErrorTextMessage : WireMessage<ErrorTextMessage> {
    static constexpr MessageId kIds[] = {MessageId::GetLastError, MessageId::RecordedClips};
    CString text;
    std::int32_t result = 0;
};

struct BaseClipInfoMessage : WireMessage<BaseClipInfoMessage> {
    static constexpr MessageId kIds[] = {MessageId::GetP2BaseClipInfo};
    CString path;
    NQP2BaseClipInfo info;
    std::int32_t result = 0;
};

} // namespace nqp2::bridge
