// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/operations.h"

#include "platform/unicode.h"
#include "worker/base_clip_info.h"
#include "worker/clip_delete.h"
#include "worker/clip_export.h"
#include "worker/clip_import.h"
#include "worker/icon_bitmap.h"
#include "worker/volume_serial.h"

#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

namespace nqp2::worker {
namespace {

using bridge::kDone;

std::string_view Run(const unsigned char* data, std::uint64_t length) {
    return data == nullptr ? std::string_view()
                           : std::string_view(reinterpret_cast<const char*>(data), length);
}

/// Bits of the transfer record's value 2: what the host asks for and what the answer tells.
constexpr std::uint32_t kTakeIncomplete = 1;
constexpr std::uint32_t kWasIncomplete = 2;

void FillSizes(const TransferSizes& sizes, stu_R8P2TransInfo& info) {
    const auto bytes = [&](ClipPart part) { return sizes.byPart[static_cast<std::size_t>(part)]; };
    info.size1 = sizes.total;
    info.size2 = sizes.written;
    info.size3 = bytes(ClipPart::Video);
    info.size4 = bytes(ClipPart::Audio);
    info.size5 = bytes(ClipPart::Metadata);
    info.size6 = bytes(ClipPart::Other);
    info.value1 = sizes.files;
    info.value2 &= ~kWasIncomplete;
    info.value2 |= sizes.lacks.empty() ? 0 : kWasIncomplete;
}

/// A clip has one of each kind; of several the first counts.
Relations RelationsOf(const CArray<stu_R8PRelationClipInfo>& related) {
    Relations relations;
    std::optional<RelatedClip>* const kinds[] = {&relations.top, &relations.previous,
                                                 &relations.next};
    for (const stu_R8PRelationClipInfo& other : related) {
        if (other.value1 < std::size(kinds) && !*kinds[other.value1]) {
            *kinds[other.value1] = RelatedClip{other.text1, other.identifier1, other.text2};
        }
    }
    return relations;
}

} // namespace

void Operations::Fail(std::string sentence) {
    m_lastError = std::move(sentence);
}

std::int32_t Operations::Result(const Outcome& outcome) {
    if (!outcome) {
        Fail(outcome.error);
    }
    return outcome ? kDone : bridge::kRefused;
}

void Operations::Tell(const TransferSizes& sizes, std::int32_t result) {
    if (result == kDone && !sizes.lacks.empty()) {
        Fail(sizes.lacks);
    }
}

void Operations::KeepOffsets(const TransferProgress& progress) {
    m_doneKiB = KibiBytes(progress.Done());
    m_totalKiB = KibiBytes(progress.Total());
}

void Operations::SetSystemType(bridge::SystemTypeMessage& message) {
    if (message.standard < VS_5994I || message.standard > VS_2398P) {
        message.result =
            Result(Failure("There is no rate family " + std::to_string(message.standard) + "."));
        return;
    }
    m_standard = static_cast<eP2_VIDEO_STANDARD>(message.standard);
    message.result = kDone;
}

void Operations::Import(bridge::ImportFileMessage& message) {
    TransferSizes sizes;
    TransferProgress progress(m_progress);
    message.result = Result(ImportClip({message.info.text1, message.info.text2, message.info.text3,
                                        (message.info.value2 & kTakeIncomplete) != 0},
                                       m_blockSize, progress, sizes));
    Tell(sizes, message.result);
    KeepOffsets(progress);
    FillSizes(sizes, message.info);
}

void Operations::GetUploadOffset(bridge::UploadOffsetMessage& message) {
    message.first = m_doneKiB;
    message.second = m_totalKiB;
    message.result = kDone;
}

void Operations::Export(bridge::ExportFileMessage& message) {
    TransferSizes sizes;
    TransferProgress progress(m_progress);
    ExportRequest request = {
        message.info.text1, message.info.text3, {}, (message.info.value2 & kTakeIncomplete) != 0};
    for (const CString& name : message.names) {
        request.clipNames.push_back(name);
    }
    message.result = Result(ExportClips(request, m_blockSize, progress, sizes));
    Tell(sizes, message.result);
    KeepOffsets(progress);
    FillSizes(sizes, message.info);
}

void Operations::Delete(bridge::TextPairMessage& message) {
    message.result = Result(DeleteClip(message.first, message.second));
}

void Operations::CreateIcon(bridge::IconMessage& message) {
    message.result =
        Result(WriteIcon(message.first, message.second,
                         Run(message.bits, bridge::PixelBytes(message.size)), message.size));
    message.bits = nullptr; // the answer carries no picture
    message.size = {};
}

void Operations::SetWriteBlockSize(bridge::ValueMessage& message) {
    const auto size = static_cast<std::size_t>(std::max(message.value, 0));
    if (size < copy::kSmallestBlock || size > copy::kLargestBlock) {
        message.result = Result(
            Failure("Blocks of " + std::to_string(message.value) + " bytes are not written."));
        return;
    }
    m_blockSize = size;
    message.result = kDone;
}

void Operations::CloseAllFile(bridge::ResultMessage& message) {
    if (m_recording != nullptr) {
        static_cast<void>(Stop(false));
    }
    message.result = kDone;
}

void Operations::GetSerialNumber(bridge::TextPairMessage& message) {
    message.result = Result(FindVolumeSerial(message.first, message.second));
}

void Operations::GetLastError(bridge::ErrorTextMessage& message) {
    message.text = platform::TextFromUtf8(m_lastError);
    message.result = kDone;
}

void Operations::GetRecordedClips(bridge::ErrorTextMessage& message) {
    message.text.Empty();
    for (const CString& name :
         m_recording != nullptr ? m_recording->ClipNames() : m_recordedClips) {
        message.text += (message.text.IsEmpty() ? L"" : L"\n") + name;
    }
    message.result = kDone;
}

void Operations::GetBaseClipInfo(bridge::BaseClipInfoMessage& message) {
    message.result = Result(DescribeClip(
        message.path, [this] { return m_progress.Lasts(); }, message.info));
}

void Operations::SetRecordingParameters(bridge::RTExportParamMessage& message) {
    RecordingParameters parameters;
    parameters.codeType = static_cast<eCodeType>(message.codeType);
    parameters.wave = message.wave;
    parameters.cardRoot = message.text1;
    parameters.clipName = message.text2;
    parameters.userClipName = message.text3;
    parameters.startTimecode = message.value1;
    parameters.relations = RelationsOf(message.relatedClips);
    parameters.dropFrame = message.value2 != 0;
    const Outcome outcome = CheckRecordingParameters(parameters);
    if (outcome) {
        m_parameters = std::move(parameters);
    }
    message.result = Result(outcome);
}

void Operations::SetRecordingAspect(bridge::ValueMessage& message) {
    m_isWide = message.value != 0;
    message.result = kDone;
}

Outcome Operations::Start(std::uint32_t expectedFrames) {
    if (m_recording != nullptr) {
        return Failure("A recording is running already.");
    }
    if (!m_parameters) {
        return Failure("The parameters of the recording have not been set.");
    }
    m_parameters->isWide = m_isWide;
    return Recording::Start(*m_parameters, expectedFrames, m_standard, m_recording);
}

void Operations::StartRecording(bridge::ValueMessage& message) {
    message.result = Result(Start(static_cast<std::uint32_t>(message.value)));
}

void Operations::AddData(bridge::AVDataMessage& message) {
    constexpr int kAccessUnits = 2;
    const std::string_view video = Run(message.data1, message.length1);
    const std::string_view sound = Run(message.data2, message.length2);
    message.data1 = message.data2 = nullptr; // the answer carries no data
    message.length1 = message.length2 = 0;
    if (m_recording == nullptr) {
        message.result = Result(Failure("No recording is running."));
    } else if (message.streamType != kAccessUnits) {
        message.result = Result(
            Failure("There is no stream of type " + std::to_string(message.streamType) + "."));
    } else {
        message.result = Result(m_recording->Add(video, sound));
    }
}

void Operations::MakeBuffer(bridge::BufferMessage& message) {
    std::int32_t size = message.value;
    if (size == 0 && m_recording != nullptr) {
        size = static_cast<std::int32_t>(m_recording->LastUnitSize());
    }
    if (size <= 0 || size > bridge::BufferMessage::kFrameBytes) {
        message.result =
            Result(Failure("There is no buffer of " + std::to_string(size) + " bytes."));
        return;
    }
    m_buffer.assign(static_cast<std::size_t>(size), 0);
    message.data = m_buffer.data();
    message.length = static_cast<std::uint32_t>(size);
    message.result = kDone;
}

Outcome Operations::Stop(bool keep) {
    const std::unique_ptr<Recording> recording = std::move(m_recording);
    if (recording == nullptr) {
        return Failure("No recording is running.");
    }
    Outcome outcome;
    if (keep) {
        outcome = recording->Finish();
    } else {
        recording->Drop();
    }
    m_recordedClips = recording->ClipNames();
    return outcome;
}

void Operations::StopRecording(bridge::StopRTExportMessage& message) {
    message.result = Result(Stop(message.first == 0));
}

void Operations::RefuseValue(bridge::ValueMessage& message) {
    message.result = Result(Failure("This request is not served."));
}

void Operations::RefuseTexts(bridge::TextPairMessage& message) {
    message.result = Result(Failure("This request is not served."));
}

} // namespace nqp2::worker
