// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/operations.h"

#include "copy/failure.h"
#include "NQP2ParserU/WorkerFields.h"
#include "platform/unicode.h"
#include "worker/card_requests.h"
#include "worker/picture_maker.h"
#include "worker/rewrap/file_maker.h"

#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

namespace nqp2::worker {
namespace {

std::string_view Run(const unsigned char* data, std::uint64_t length) {
    return data == nullptr ? std::string_view()
                           : std::string_view(reinterpret_cast<const char*>(data), length);
}

void FillSizes(const TransferSizes& sizes, stu_R8P2TransInfo& info) {
    const auto bytes = [&](ClipPart part) { return sizes.byPart[static_cast<std::size_t>(part)]; };
    const TransferFields reply(info);
    reply.bytes = sizes.total;
    reply.writtenBytes = sizes.written;
    reply.videoBytes = bytes(ClipPart::Video);
    reply.audioBytes = bytes(ClipPart::Audio);
    reply.metadataBytes = bytes(ClipPart::Metadata);
    reply.otherBytes = bytes(ClipPart::Other);
    reply.files = sizes.files;
    reply.flags &= ~kWasIncomplete;
    reply.flags |= sizes.lacks.empty() ? 0 : kWasIncomplete;
}

/// A clip has one of each kind; of several the first counts.
Relations RelationsOf(const CArray<stu_R8PRelationClipInfo>& related) {
    Relations relations;
    std::optional<RelatedClip>* const kinds[] = {&relations.top, &relations.previous,
                                                 &relations.next};
    for (const stu_R8PRelationClipInfo& each : related) {
        const RelationFields other(each);
        if (other.kind < std::size(kinds) && !*kinds[other.kind]) {
            *kinds[other.kind] =
                RelatedClip{other.clipName, other.identifier, other.cardSerialNumber};
        }
    }
    return relations;
}

} // namespace

void Operations::Fail(std::string sentence) {
    m_lastError = std::move(sentence);
}

/// One import or export: what it has come to goes into its answer however it ends.
class Operations::Transfer {
public:
    Transfer(Operations& session, stu_R8P2TransInfo& info)
        : m_session(session), m_info(info), m_progress(session.m_progress) {}
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;
    ~Transfer() {
        m_session.m_doneKiB = KibiBytes(m_progress.Done());
        m_session.m_totalKiB = KibiBytes(m_progress.Total());
        FillSizes(m_sizes, m_info);
    }

    /// `run` is ImportClip or ExportClips.
    template <class Request>
    void Run(void (*run)(const Request&, std::size_t, copy::Watch&, TransferSizes&),
             const Request& request) {
        run(request, m_session.m_blockSize, m_progress, m_sizes);
        if (!m_sizes.lacks.empty()) {
            m_session.Fail(m_sizes.lacks);
        }
    }

private:
    Operations& m_session;
    stu_R8P2TransInfo& m_info;
    TransferSizes m_sizes;
    TransferProgress m_progress;
};

void Operations::SetSystemType(bridge::SystemTypeMessage& message) {
    if (message.standard < VS_5994I || message.standard > VS_2398P) {
        throw copy::Failure("There is no rate family " + std::to_string(message.standard) + ".");
    }
    m_standard = static_cast<eP2_VIDEO_STANDARD>(message.standard);
}

void Operations::Import(bridge::ImportFileMessage& message) {
    const TransferFields asked(message.info);
    const ImportRequest request = {asked.cardRoot, asked.clipName, asked.folder,
                                   (asked.flags & kTakeIncomplete) != 0};
    Transfer(*this, message.info).Run(ImportClip, request);
}

void Operations::GetUploadOffset(bridge::UploadOffsetMessage& message) {
    message.first = m_doneKiB;
    message.second = m_totalKiB;
}

void Operations::Export(bridge::ExportFileMessage& message) {
    const TransferFields asked(message.info);
    ExportRequest request = {
        asked.cardRoot, asked.folder, {}, (asked.flags & kTakeIncomplete) != 0};
    for (const CString& name : message.names) {
        request.clipNames.push_back(name);
    }
    Transfer(*this, message.info).Run(ExportClips, request);
}

void Operations::Delete(bridge::TextPairMessage& message) {
    DeleteClip(message.first, message.second);
}

void Operations::CreateIcon(bridge::IconMessage& message) {
    const std::string_view pixels = Run(message.bits, bridge::PixelBytes(message.size));
    const SIZE size = message.size;
    message.bits = nullptr; // the answer carries no picture
    message.size = {};
    WriteIcon(message.first, message.second, pixels, size);
}

void Operations::SetWriteBlockSize(bridge::ValueMessage& message) {
    const auto size = static_cast<std::size_t>(std::max(message.value, 0));
    if (size < copy::kSmallestBlock || size > copy::kLargestBlock) {
        throw copy::Failure("Blocks of " + std::to_string(message.value) +
                            " bytes are not written.");
    }
    m_blockSize = size;
}

void Operations::CloseAllFile(bridge::ResultMessage& /*message*/) {
    if (m_recording != nullptr) {
        Stop(false);
    }
}

void Operations::GetSerialNumber(bridge::TextPairMessage& message) {
    message.second.Empty();
    message.second = FindVolumeSerial(message.first);
}

void Operations::GetLastError(bridge::ErrorTextMessage& message) {
    message.text = platform::TextFromUtf8(m_lastError);
}

void Operations::GetRecordedClips(bridge::ErrorTextMessage& message) {
    message.text.Empty();
    for (const CString& name :
         m_recording != nullptr ? m_recording->ClipNames() : m_recordedClips) {
        message.text += (message.text.IsEmpty() ? L"" : L"\n") + name;
    }
}

void Operations::MakePictures(bridge::PicturesMessage& message) {
    const CStringArray paths = std::move(message.paths);
    message.paths.RemoveAll();
    message.pictures.RemoveAll();
    m_pictures.clear();
    if (paths.GetSize() > message.kMostPaths) {
        throw copy::Failure("More than " + std::to_string(message.kMostPaths) +
                            " pictures are not made at once.");
    }
    PictureMaker maker(message.bounds, [this] { return m_progress.Lasts(); });
    m_pictures.reserve(static_cast<std::size_t>(paths.GetSize())); // the answer points into it
    for (const CString& path : paths) {
        bridge::PictureRecord record;
        try {
            const std::string& jpeg = m_pictures.emplace_back(maker.Make(path));
            record.data = reinterpret_cast<const unsigned char*>(jpeg.data());
            record.length = static_cast<std::uint32_t>(jpeg.size());
        } catch (const copy::Failure& failure) {
            record.problem = platform::TextFromUtf8(failure.what());
        }
        message.pictures.Add(record);
    }
}

void Operations::DescribeMedia(bridge::MediaMessage& message) {
    message = DescribeMediaFile(message.path, [this] { return m_progress.Lasts(); });
}

void Operations::Rewrap(bridge::RewrapMessage& message) {
    const RewrapRequest asked = std::move(message.request);
    message = {};
    TransferProgress progress(m_progress);
    try {
        message.written = rewrap::MakeFile(rewrap::Checked(asked), progress);
    } catch (const copy::Cancelled&) {
        message.isCancelled = 1;
        throw;
    }
}

void Operations::GetBaseClipInfo(bridge::BaseClipInfoMessage& message) {
    message.info = DescribeClip(
        message.path, [this] { return m_progress.Lasts(); }, message.info);
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
    CheckRecordingParameters(parameters);
    m_parameters = std::move(parameters);
}

void Operations::SetRecordingAspect(bridge::ValueMessage& message) {
    m_isWide = message.value != 0;
}

void Operations::StartRecording(bridge::ValueMessage& message) {
    if (m_recording != nullptr) {
        throw copy::Failure("A recording is running already.");
    }
    if (!m_parameters) {
        throw copy::Failure("The parameters of the recording have not been set.");
    }
    m_parameters->isWide = m_isWide;
    m_recording = std::make_unique<Recording>(
        *m_parameters, static_cast<std::uint32_t>(message.value), m_standard);
}

void Operations::AddData(bridge::AVDataMessage& message) {
    constexpr int kAccessUnit = 2;
    constexpr int kAccessUnits = 3; // as many as the flag says
    const std::string_view video = Run(message.data1, message.length1);
    const std::string_view sound = Run(message.data2, message.length2);
    message.data1 = message.data2 = nullptr; // the answer carries no data
    message.length1 = message.length2 = 0;
    if (m_recording == nullptr) {
        throw copy::Failure("No recording is running.");
    }
    if (message.streamType != kAccessUnit && message.streamType != kAccessUnits) {
        throw copy::Failure("There is no stream of type " + std::to_string(message.streamType) +
                            ".");
    }
    const bool isOne = message.streamType == kAccessUnit;
    m_recording->Add(video, sound, isOne ? 1 : static_cast<std::uint32_t>(message.flag));
}

void Operations::MakeBuffer(bridge::BufferMessage& message) {
    std::int32_t size = message.value;
    if (size == 0 && m_recording != nullptr) {
        size = static_cast<std::int32_t>(m_recording->LastUnitSize());
    }
    if (size <= 0 || size > bridge::BufferMessage::kFrameBytes) {
        throw copy::Failure("There is no buffer of " + std::to_string(size) + " bytes.");
    }
    m_buffer.assign(static_cast<std::size_t>(size), 0);
    message.data = m_buffer.data();
    message.length = static_cast<std::uint32_t>(size);
}

void Operations::Stop(bool keep) {
    const std::unique_ptr<Recording> recording = std::move(m_recording);
    if (recording == nullptr) {
        throw copy::Failure("No recording is running.");
    }
    try {
        keep ? recording->Finish() : recording->Drop();
    } catch (const std::exception&) {
        m_recordedClips = recording->ClipNames(); // those that were completed
        throw;
    }
    m_recordedClips = recording->ClipNames();
}

void Operations::StopRecording(bridge::StopRTExportMessage& message) {
    Stop(message.first == 0);
}

void Operations::RefuseValue(bridge::ValueMessage& /*message*/) {
    throw copy::Failure("This request is not served.");
}

void Operations::RefuseTexts(bridge::TextPairMessage& /*message*/) {
    throw copy::Failure("This request is not served.");
}

} // namespace nqp2::worker
