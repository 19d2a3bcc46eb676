// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/worker_proxy.h"

#include <utility>

using nqp2::bridge::AVDataMessage;
using nqp2::bridge::BaseClipInfoMessage;
using nqp2::bridge::BufferMessage;
using nqp2::bridge::ErrorTextMessage;
using nqp2::bridge::ExportFileMessage;
using nqp2::bridge::IconMessage;
using nqp2::bridge::ImportFileMessage;
using nqp2::bridge::kChannelFailed;
using nqp2::bridge::kDone;
using nqp2::bridge::kRefused;
using nqp2::bridge::MediaMessage;
using nqp2::bridge::MessageId;
using nqp2::bridge::PicturesMessage;
using nqp2::bridge::ResultMessage;
using nqp2::bridge::RewrapMessage;
using nqp2::bridge::RTExportParamMessage;
using nqp2::bridge::StopRTExportMessage;
using nqp2::bridge::SystemTypeMessage;
using nqp2::bridge::TextPairMessage;
using nqp2::bridge::UploadOffsetMessage;
using nqp2::bridge::ValueMessage;

namespace {

std::int32_t StatusOf(std::int32_t result) {
    return result != 0 ? kDone : kRefused;
}

} // namespace

template <class Message>
std::int32_t CTNQ264BitSupport::Request(MessageId id, Message& message) {
    return Exchange(RequestPort(), id, message) ? StatusOf(message.result) : kChannelFailed;
}

template <class Message>
std::int32_t CTNQ264BitSupport::RequestRaw(MessageId id, Message& message) {
    return Exchange(RequestPort(), id, message) ? message.result : kChannelFailed;
}

std::int32_t CTNQ264BitSupport::SetSystemType(eP2_VIDEO_STANDARD standard) {
    SystemTypeMessage message;
    message.standard = standard;
    return Request(MessageId::SetSystemType, message);
}

std::int32_t CTNQ264BitSupport::ImportFile(stu_R8P2TransInfo& info) {
    ImportFileMessage message;
    message.info = info;
    const std::int32_t status = Request(MessageId::ImportFile, message);
    if (status != kChannelFailed) {
        info = std::move(message.info);
    }
    return status;
}

std::int32_t CTNQ264BitSupport::GetUploadOffset(std::uint32_t& first, std::uint32_t& second) {
    UploadOffsetMessage message;
    const std::int32_t status = Request(MessageId::GetUploadOffset, message);
    first = message.first;
    second = message.second;
    return status;
}

std::int32_t CTNQ264BitSupport::ExportFile(const stu_R8P2TransInfo& info,
                                           const CStringArray& names) {
    ExportFileMessage message;
    message.info = info;
    message.names = names;
    return RequestRaw(MessageId::ExportFile, message);
}

std::int32_t CTNQ264BitSupport::DeleteFileW(const CString& first, const CString& second) {
    TextPairMessage message;
    message.first = first;
    message.second = second;
    return Request(MessageId::DeleteFile, message);
}

std::int32_t CTNQ264BitSupport::SetRTExportParam(RTExportParamMessage& message) {
    return Request(MessageId::SetRTExportParam, message);
}

std::int32_t CTNQ264BitSupport::SetRTExportExtraParam(std::int32_t value) {
    ValueMessage message;
    message.value = value;
    return Request(MessageId::SetRTExportExtraParam, message);
}

std::int32_t CTNQ264BitSupport::StartRTExport(std::uint32_t value) {
    ValueMessage message;
    message.value = static_cast<std::int32_t>(value);
    return Request(MessageId::StartRTExport, message);
}

std::int32_t CTNQ264BitSupport::StopRTExport(std::int32_t first, std::int32_t second) {
    StopRTExportMessage message;
    message.first = first;
    message.second = second;
    return Request(MessageId::StopRTExport, message);
}

std::int32_t CTNQ264BitSupport::AddRTExportAVDataForBuf(std::int32_t value, unsigned char*& data) {
    BufferMessage message;
    message.value = value;
    // A reply that promises more than arrived counts as none.
    const bool replied = Exchange(
        RequestPort(), MessageId::AddRTExportAVDataForBuf, message, [&](std::int32_t restored) {
            if (restored > 0) {
                data = m_requestChannel->Keep({message.data, message.length});
            }
            return restored > 0;
        });
    return replied ? StatusOf(message.result) : kChannelFailed;
}

std::int32_t CTNQ264BitSupport::AddRTExportAVData(AVDataMessage& message) {
    constexpr std::uint8_t kFirstForwarded = 2;
    if (message.streamType < kFirstForwarded) { // 0 and 1: kept, hosts rely on it
        return kRefused;
    }
    return Request(MessageId::AddRTExportAVData, message);
}

std::int32_t CTNQ264BitSupport::CreateIconBmp(IconMessage& message) {
    return Request(MessageId::CreateIconBmp, message);
}

std::int32_t CTNQ264BitSupport::SetWriteBlockSize(std::int32_t size) {
    ValueMessage message;
    message.value = size;
    return RequestRaw(MessageId::SetWriteBlockSize, message);
}

std::int32_t CTNQ264BitSupport::CloseAllFile() {
    ResultMessage message;
    return RequestRaw(MessageId::CloseAllFile, message);
}

std::int32_t CTNQ264BitSupport::GetP2SerialNumber(const CString& path, CString& serial) {
    TextPairMessage message;
    message.first = path;
    const std::int32_t status = Request(MessageId::GetP2SerialNumber, message);
    if (status != kChannelFailed) {
        serial = message.second;
    }
    return status;
}

std::int32_t CTNQ264BitSupport::GetLastError(CString& text) {
    ErrorTextMessage message;
    const std::int32_t status = Request(MessageId::GetLastError, message);
    text = message.text;
    return status;
}

std::int32_t CTNQ264BitSupport::GetRecordedClips(CString& names) {
    ErrorTextMessage message;
    const std::int32_t status = Request(MessageId::RecordedClips, message);
    names = message.text;
    return status;
}

std::int32_t CTNQ264BitSupport::MakePictures(PicturesMessage& message,
                                             const std::function<void()>& take) {
    const bool replied =
        Exchange(RequestPort(), MessageId::MakePictures, message, [&](std::int32_t restored) {
            if (restored > 0) {
                take();
            }
            return restored > 0;
        });
    return replied ? StatusOf(message.result) : kChannelFailed;
}

std::int32_t CTNQ264BitSupport::DescribeMedia(MediaMessage& message) {
    return Request(MessageId::DescribeMedia, message);
}

std::int32_t CTNQ264BitSupport::Rewrap(RewrapMessage& message) {
    return Request(MessageId::Rewrap, message);
}

std::int32_t CTNQ264BitSupport::GetP2BaseClipInfo(const CString& path, NQP2BaseClipInfo& info) {
    BaseClipInfoMessage message;
    message.path = path;
    message.info = info;
    const std::int32_t status = Request(MessageId::GetP2BaseClipInfo, message);
    if (status != kChannelFailed) {
        info = std::move(message.info);
    }
    return status;
}
