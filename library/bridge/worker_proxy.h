// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/channel_port.h"
#include "bridge/messages.h"
#include "bridge/request_server.h"
#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CodeType.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/CStringArray.h"
#include "NQP2ParserU/ImpCallBack.h"
#include "NQP2ParserU/MediaHeaders.h"
#include "platform/process.h"

#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>

namespace nqp2::bridge {

/// What a proxy knows of one of its channels. Three words, as hosts know it.
struct ChannelLink {
    void* unused = nullptr;
    ChannelHandle handle = 0;
    std::unique_ptr<unsigned char[]> data; ///< for replies that hand out data; null when none
};
static_assert(sizeof(ChannelLink) == 3 * sizeof(void*));

/// Owns a link and knows the size of its data buffer.
struct ChannelHolder {
    std::size_t dataSize = 0;
    std::unique_ptr<ChannelLink> link;

    explicit ChannelHolder(std::size_t size = 0)
        : dataSize(size), link(std::make_unique<ChannelLink>()) {
        if (size > 0) {
            // Left as it comes: pages that no reply fills cost nothing.
            link->data.reset(new unsigned char[size]);
        }
    }

    /// A copy in the data buffer, which grows when it is too small; growing ends the life of what
    /// was handed out before. Throws when out of memory.
    unsigned char* Keep(std::span<const unsigned char> bytes);
};

/// What the host has set for the process. Written by the host's two calls alone, never locked.
struct InstalledInterface {
    void* systemObject = nullptr;
    const SysInterfaceTable* table = nullptr;
    RequestServer* server = nullptr; ///< owned; null when none runs
};
InstalledInterface& Installed();

/// What a proxy's operations answer beside kDone and kRefused.
inline constexpr std::int32_t kChannelFailed = -1;

} // namespace nqp2::bridge

/// A parser's way to the worker process: sends its requests on one channel, is told of the progress
/// of imports on a second one, and runs the server that answers the worker's own requests.
///
/// Life: construct, Open, requests, Close, destroy. Requests come from one thread at a time and
/// wait for their reply. They return kDone, kRefused or kChannelFailed unless they say otherwise,
/// and throw when out of memory. Fields in the order that hosts know.
class CTNQ264BitSupport {
public:
    /// Takes the table that is installed now; a later one does not reach this proxy.
    CTNQ264BitSupport();
    CTNQ264BitSupport(const CTNQ264BitSupport&) = delete;
    CTNQ264BitSupport& operator=(const CTNQ264BitSupport&) = delete;
    /// Close comes first: this alone closes no channel.
    virtual ~CTNQ264BitSupport();

    /// Opens both channels and starts the request server. Returns kDone, or kChannelFailed at the
    /// first thing that is missing; what was opened before it stays so, and Close leaves it.
    std::int32_t Open();
    /// Stops the progress thread and waits for it, closes both channels, stops the request server.
    /// Returns kDone, also when nothing is open. Not to be called by the progress callback. In a
    /// process that was forked since Open it drops what it holds and ends nothing.
    std::int32_t Close();

    /// Proxies are shared by parsers that were assigned to each other; the last one destroys them.
    void AddHolder() { ++m_holders; }
    /// True when the caller was the last holder.
    [[nodiscard]] bool DropHolder() { return --m_holders == 0; }

    /// Sets who is told of progress: no host while either pointer is null. Starts the progress
    /// thread unless it runs. Returns kDone when it ran, else the result field of the reply.
    std::int32_t SetImpCallBack(nqp2::ImpCallBack callback, void* context);

    std::int32_t SetSystemType(eP2_VIDEO_STANDARD standard);
    /// `info` becomes what the worker sends back.
    std::int32_t ImportFile(stu_R8P2TransInfo& info);
    std::int32_t GetUploadOffset(std::uint32_t& first, std::uint32_t& second);
    /// Returns the reply's result field as it is.
    std::int32_t ExportFile(const stu_R8P2TransInfo& info, const CStringArray& names);
    std::int32_t DeleteFileW(const CString& first, const CString& second);
    std::int32_t SetRTExportParam(nqp2::bridge::RTExportParamMessage& message);
    std::int32_t SetRTExportExtraParam(std::int32_t value);
    std::int32_t StartRTExport(std::uint32_t value);
    std::int32_t StopRTExport(std::int32_t first, std::int32_t second);
    /// On a reply `data` points to the worker's bytes, which stay until the next such call or
    /// Close.
    std::int32_t AddRTExportAVDataForBuf(std::int32_t value, unsigned char*& data);
    /// Stream types 0 and 1 are not forwarded but answered kRefused.
    std::int32_t AddRTExportAVData(nqp2::bridge::AVDataMessage& message);
    std::int32_t CreateIconBmp(nqp2::bridge::IconMessage& message);
    /// Returns the reply's result field as it is.
    std::int32_t SetWriteBlockSize(std::int32_t size);
    /// Returns the reply's result field as it is.
    std::int32_t CloseAllFile();
    /// `serial` is set by every reply, whatever its result.
    std::int32_t GetP2SerialNumber(const CString& path, CString& serial);
    std::int32_t GetLastError(CString& text);
    /// One name on each line.
    std::int32_t GetRecordedClips(CString& names);
    /// `message` becomes the reply and is given to `take` while its pictures are there.
    std::int32_t MakePictures(nqp2::bridge::PicturesMessage& message,
                              const std::function<void()>& take);
    /// `message` becomes the reply.
    std::int32_t DescribeMedia(nqp2::bridge::MediaMessage& message);
    /// `message` becomes the reply.
    std::int32_t Rewrap(nqp2::bridge::RewrapMessage& message);
    /// `info` travels with the request and becomes what the worker sends back.
    std::int32_t GetP2BaseClipInfo(const CString& path, NQP2BaseClipInfo& info);

private:
    using Holder = std::unique_ptr<nqp2::bridge::ChannelHolder>;

    [[nodiscard]] nqp2::bridge::ChannelPort RequestPort() const;
    [[nodiscard]] nqp2::bridge::ChannelPort CallbackPort() const;
    bool OpenRequestChannel();
    bool OpenCallbackChannel();
    void StartServer();
    void CloseChannelOf(Holder& holder) const;

    /// It touches no channel before `registered` is set.
    void StartProgressThread(std::future<void> registered);
    void StopProgressThread();
    void RunProgressThread();
    nqp2::bridge::Heard HearProgress(const nqp2::bridge::ChannelPort& port);
    void AskHost(std::uint32_t position, std::uint32_t total);

    /// The reply's result field as kDone or kRefused.
    template <class Message>
    std::int32_t Request(nqp2::bridge::MessageId id, Message& message);
    /// The reply's result field as it is.
    template <class Message>
    std::int32_t RequestRaw(nqp2::bridge::MessageId id, Message& message);

    const nqp2::SysInterfaceTable* m_table;
    Holder m_callbackChannel;
    std::int32_t m_running = 0;
    std::unique_ptr<std::thread> m_progressThread;
    std::int32_t m_abort = 0;
    std::mutex m_lock; ///< of both flags and of what is called back
    nqp2::ImpCallBack m_callback = nullptr;
    void* m_context = nullptr;
    Holder m_requestChannel;
    std::int32_t m_opened = 0;
    std::unique_ptr<nqp2::bridge::RequestServer> m_requestServer;
    int m_holders = 1;
    nqp2::platform::Owner m_owner;
};
