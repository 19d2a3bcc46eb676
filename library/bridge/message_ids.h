// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>

namespace nqp2::bridge {

/// Id of both channels of a proxy.
inline constexpr std::uint32_t kProxyChannelId = 20000;
/// Id of the request server's channel and of the message that announces it.
inline constexpr std::uint32_t kRequestServerId = 20023;

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
};

/// A message's number as the channel takes it.
constexpr std::uint32_t Number(MessageId id) {
    return static_cast<std::uint32_t>(id);
}

/// What a worker puts into the result field of a reply.
inline constexpr std::int32_t kRefused = 0;
inline constexpr std::int32_t kDone = 1;

} // namespace nqp2::bridge
