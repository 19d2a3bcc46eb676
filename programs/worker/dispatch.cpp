// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/operations.h"

#include "copy/failure.h"
#include "platform/guard.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>

namespace nqp2::worker {
namespace {

using bridge::MessageId;

std::int32_t NoAnswer(unsigned char*, std::int32_t) {
    return 0;
}

/// Request and answer as one call of Operations.
template <class Message, void (Operations::*Operation)(Message&)>
Answer Run(Operations& operations, unsigned char* request, std::int32_t length) {
    const auto message = std::make_shared<Message>();
    if (message->Restore(request, length) == 0) {
        operations.Fail("The request came damaged.");
        return NoAnswer;
    }
    message->result = bridge::kRefused;
    try {
        (operations.*Operation)(*message);
        message->result = bridge::kDone;
    } catch (const copy::Failure& failure) {
        operations.Fail(failure.what());
    } catch (const std::bad_alloc&) {
        operations.Fail("Out of memory.");
    }
    return [message](unsigned char* reply, std::int32_t capacity) {
        return message->Save(reply, capacity);
    };
}

struct Handler {
    MessageId id;
    Answer (*run)(Operations&, unsigned char*, std::int32_t);
};

constexpr Handler kHandlers[] = {
    {MessageId::SetSystemType, Run<bridge::SystemTypeMessage, &Operations::SetSystemType>},
    {MessageId::ImportFile, Run<bridge::ImportFileMessage, &Operations::Import>},
    {MessageId::GetUploadOffset, Run<bridge::UploadOffsetMessage, &Operations::GetUploadOffset>},
    {MessageId::ExportFile, Run<bridge::ExportFileMessage, &Operations::Export>},
    {MessageId::DeleteFile, Run<bridge::TextPairMessage, &Operations::Delete>},
    {MessageId::UnusedValue, Run<bridge::ValueMessage, &Operations::RefuseValue>},
    {MessageId::SetRTExportParam,
     Run<bridge::RTExportParamMessage, &Operations::SetRecordingParameters>},
    {MessageId::StartRTExport, Run<bridge::ValueMessage, &Operations::StartRecording>},
    {MessageId::StopRTExport, Run<bridge::StopRTExportMessage, &Operations::StopRecording>},
    {MessageId::AddRTExportAVDataForBuf, Run<bridge::BufferMessage, &Operations::MakeBuffer>},
    {MessageId::AddRTExportAVData, Run<bridge::AVDataMessage, &Operations::AddData>},
    {MessageId::UnusedTexts, Run<bridge::TextPairMessage, &Operations::RefuseTexts>},
    {MessageId::CreateIconBmp, Run<bridge::IconMessage, &Operations::CreateIcon>},
    {MessageId::SetWriteBlockSize, Run<bridge::ValueMessage, &Operations::SetWriteBlockSize>},
    {MessageId::CloseAllFile, Run<bridge::ResultMessage, &Operations::CloseAllFile>},
    {MessageId::GetP2SerialNumber, Run<bridge::TextPairMessage, &Operations::GetSerialNumber>},
    {MessageId::GetLastError, Run<bridge::ErrorTextMessage, &Operations::GetLastError>},
    {MessageId::SetRTExportExtraParam, Run<bridge::ValueMessage, &Operations::SetRecordingAspect>},
    {MessageId::RecordedClips, Run<bridge::ErrorTextMessage, &Operations::GetRecordedClips>},
    {MessageId::MakePictures, Run<bridge::PicturesMessage, &Operations::MakePictures>},
    {MessageId::DescribeMedia, Run<bridge::MediaMessage, &Operations::DescribeMedia>},
    {MessageId::Rewrap, Run<bridge::RewrapMessage, &Operations::Rewrap>},
    {MessageId::GetP2BaseClipInfo, Run<bridge::BaseClipInfoMessage, &Operations::GetBaseClipInfo>},
};

} // namespace

Answer Dispatch(Operations& operations, std::uint32_t id, unsigned char* request,
                std::int32_t length) noexcept {
    Answer answer = NoAnswer;
    const bool isOver = platform::Guarded(false, [&] {
        const auto* const handler =
            std::find_if(std::begin(kHandlers), std::end(kHandlers),
                         [id](const Handler& each) { return Number(each.id) == id; });
        if (handler != std::end(kHandlers)) {
            answer = handler->run(operations, request, length);
        }
        return true;
    });
    if (!isOver) {
        // Short enough to need no memory: who deletes a clip is told by the sentence alone.
        operations.Fail("Out of memory.");
    }
    return answer;
}

} // namespace nqp2::worker
