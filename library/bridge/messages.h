// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/ClipMetadataRecords.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/CStringArray.h"
#include "NQP2ParserU/MediaHeaders.h"
#include "NQP2ParserU/NQP2BaseClipInfo.h"
#include "NQP2ParserU/R8P2TransInfo.h"
#include "NQP2ParserU/Rewrap.h"

#include <cstdint>

/// One record for each kind of message, used for request and reply alike. The bytes: docs/wire.md.
namespace nqp2::bridge {

/// Id of both channels of a proxy.
inline constexpr std::uint32_t kProxyChannelId = 20000;
/// Id of the request server's channel and of the message that announces it.
inline constexpr std::uint32_t kRequestServerId = 20023;

/// Numbers of the messages by which connections of the worker's requests come and go.
inline constexpr std::uint32_t kConnectId = 50;   ///< also the id of a connection's channel
inline constexpr std::uint32_t kConnectedId = 51; ///< the answer on the server's channel
inline constexpr std::uint32_t kDisconnectId = 52;

/// Requests of the library to the worker; the reply bears the same number. Only Progress goes the
/// other way.
enum class MessageId : std::uint32_t {
    SetSystemType = 20002,
    RegisterProgress = 20003, ///< on the callback channel
    Progress = 20004,         ///< on the callback channel, from the worker
    ImportFile = 20005,
    GetUploadOffset = 20006,
    ExportFile = 20007,
    DeleteFile = 20008,
    UnusedValue = 20009, ///< no front end sends it
    SetRTExportParam = 20010,
    StartRTExport = 20011,
    StopRTExport = 20012,
    AddRTExportAVDataForBuf = 20013,
    AddRTExportAVData = 20014,
    UnusedTexts = 20015, ///< no front end sends it
    CreateIconBmp = 20016,
    SetWriteBlockSize = 20017,
    CloseAllFile = 20018,
    GetP2SerialNumber = 20019,
    GetLastError = 20020,
    SetRTExportExtraParam = 20021,
    GetP2BaseClipInfo = 20022,
    // Beside the fixed ones.
    RecordedClips = 21000,
    MakePictures = 21001,
    DescribeMedia = 21002,
    Rewrap = 21003,
};

/// A message's number as the channel takes it.
constexpr std::uint32_t Number(MessageId id) {
    return static_cast<std::uint32_t>(id);
}

/// What a worker puts into the result field of a reply.
inline constexpr std::int32_t kRefused = 0;
inline constexpr std::int32_t kDone = 1;

/// What all messages can do. Which fields travel, and in which order, is described once for each
/// message in messages.cpp; all three operations follow from that.
template <class Message>
struct WireMessage {
    /// Bytes that a buffer must have for Save. More than 2 GiB count as the largest number. A
    /// transfer record's image is longer than this says, a data run without data shorter.
    [[nodiscard]] std::int32_t Size() const;
    /// Writes the image and returns its length; 0, and nothing written, when the buffer is null or
    /// when `capacity` is below Size() or below the image's length. 0 also without memory.
    std::int32_t Save(unsigned char* buffer, std::int32_t capacity) const;
    /// Reads an image and returns its length, which may be less than `length`. 0, and the record
    /// unchanged, when the buffer is null or does not hold a whole image, or without memory.
    /// The buffer may be rewritten by a peer meanwhile; the unit behind each text in it becomes 0.
    std::int32_t Restore(unsigned char* buffer, std::int32_t length);
};

/// The rate family of the system.
struct SystemTypeMessage : WireMessage<SystemTypeMessage> {
    std::int32_t standard = 0; ///< eP2_VIDEO_STANDARD
    std::int32_t result = 0;
};

/// A request without arguments.
struct ResultMessage : WireMessage<ResultMessage> {
    std::int32_t result = 0;
};

/// How far a transfer got; the answer carries the host's wish to abort.
struct ProgressMessage : WireMessage<ProgressMessage> {
    std::uint32_t position = 0;
    std::uint32_t total = 0;
    std::int32_t abort = 0;
    std::uint32_t spare = 0;
};

struct ImportFileMessage : WireMessage<ImportFileMessage> {
    stu_R8P2TransInfo info;
    std::int32_t result = 0;
};

struct UploadOffsetMessage : WireMessage<UploadOffsetMessage> {
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    std::int32_t result = 0;
};

struct ExportFileMessage : WireMessage<ExportFileMessage> {
    stu_R8P2TransInfo info;
    CStringArray names;
    std::int32_t result = 0;
};

struct TextPairMessage : WireMessage<TextPairMessage> {
    CString first;
    CString second;
    std::int32_t result = 0;
};

struct ValueMessage : WireMessage<ValueMessage> {
    std::int32_t value = 0; ///< StartRTExport's is unsigned: the same 32 bits
    std::int32_t result = 0;
};

/// Format of the stream and the target of a real-time export.
struct RTExportParamMessage : WireMessage<RTExportParamMessage> {
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
    std::int32_t first = 0;
    std::int32_t second = 0;
    std::int32_t result = 0;
};

/// A value to the worker, a data block back.
struct BufferMessage : WireMessage<BufferMessage> {
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
    CString text;
    std::int32_t result = 0;
};

struct BaseClipInfoMessage : WireMessage<BaseClipInfoMessage> {
    CString path;
    NQP2BaseClipInfo info;
    std::int32_t result = 0;
};

/// A small picture of a file.
struct PictureRecord {
    CString problem;                     ///< why there is none; "" with a picture
    const unsigned char* data = nullptr; ///< JPEG; not owned; restored: in the received buffer
    std::uint32_t length = 0;            ///< bytes
};

/// Files; back come their pictures, none larger than the bounds, in the order of the files.
struct PicturesMessage : WireMessage<PicturesMessage> {
    static constexpr std::int64_t kMostPaths = 256;
    CStringArray paths;
    tagSIZE bounds; ///< pixels
    CArray<PictureRecord> pictures;
    std::int32_t result = 0;
};

/// A media file; back comes what its container tells.
struct MediaMessage : WireMessage<MediaMessage> {
    CString path;
    CArray<TrackMetadata> tracks;
    CArray<MetadataText> texts;
    std::int32_t isCut = 0; ///< there was more than is told
    std::int32_t result = 0;
};

/// What one file is to be made of; back comes what was written, without the request.
struct RewrapMessage : WireMessage<RewrapMessage> {
    RewrapRequest request;
    RewrapResult written;
    std::int32_t isCancelled = 0; ///< why it was refused
    std::int32_t result = 0;
};

/// What a worker asks for: the channel of a connection as the library opens it.
struct ConnectionRecord : WireMessage<ConnectionRecord> {
    std::uint32_t sendSize = 0;
    std::uint32_t receiveSize = 0;
    std::uint32_t sendTimeout = 0;    ///< milliseconds
    std::uint32_t receiveTimeout = 0; ///< milliseconds
};

} // namespace nqp2::bridge
