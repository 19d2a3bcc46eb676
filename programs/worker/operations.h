// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/messages.h"
#include "NQP2ParserU/CodeType.h"
#include "worker/progress_link.h"
#include "worker/recording.h"
#include "worker/transfer.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace nqp2::worker {

/// What a session does for each request: the message holds the arguments and receives the answer.
/// Used by one thread.
class Operations {
public:
    explicit Operations(ProgressLink& progress) : m_progress(progress) {}

    void SetSystemType(bridge::SystemTypeMessage& message);
    void Import(bridge::ImportFileMessage& message);
    void GetUploadOffset(bridge::UploadOffsetMessage& message);
    void Export(bridge::ExportFileMessage& message);
    void Delete(bridge::TextPairMessage& message);
    void CreateIcon(bridge::IconMessage& message);
    void SetWriteBlockSize(bridge::ValueMessage& message);
    void CloseAllFile(bridge::ResultMessage& message);
    void GetSerialNumber(bridge::TextPairMessage& message);
    void GetLastError(bridge::ErrorTextMessage& message);
    void GetRecordedClips(bridge::ErrorTextMessage& message);
    void GetBaseClipInfo(bridge::BaseClipInfoMessage& message);
    void SetRecordingParameters(bridge::RTExportParamMessage& message);
    void SetRecordingAspect(bridge::ValueMessage& message);
    void StartRecording(bridge::ValueMessage& message);
    void AddData(bridge::AVDataMessage& message);
    void MakeBuffer(bridge::BufferMessage& message);
    void StopRecording(bridge::StopRTExportMessage& message);
    void RefuseValue(bridge::ValueMessage& message);
    void RefuseTexts(bridge::TextPairMessage& message);

    /// Remembers a failure that is no operation's own.
    void Fail(std::string sentence);

private:
    /// The result that stands for the outcome; a failure's sentence is kept.
    std::int32_t Result(const Outcome& outcome);
    /// Keeps the sentence about clips that were taken although they are not whole.
    void Tell(const TransferSizes& sizes, std::int32_t result);
    void KeepOffsets(const TransferProgress& progress);
    Outcome Start(std::uint32_t expectedFrames);
    Outcome Stop(bool keep);

    ProgressLink& m_progress;
    std::string m_lastError;
    eP2_VIDEO_STANDARD m_standard = VS_50I;
    std::size_t m_blockSize = copy::kDefaultBlock;
    std::uint32_t m_doneKiB = 0;
    std::uint32_t m_totalKiB = 0;
    std::optional<RecordingParameters> m_parameters;
    bool m_isWide = false;
    std::unique_ptr<Recording> m_recording;
    std::vector<CString> m_recordedClips; ///< of the last recording
    std::vector<unsigned char> m_buffer;
};

} // namespace nqp2::worker
