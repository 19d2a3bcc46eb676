// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/worker_proxy.h"

#include "bridge/installed_interface.h"
#include "bridge/messages.h"
#include "bridge/request_cycle.h"

using nqp2::bridge::ChannelHolder;
using nqp2::bridge::ChannelPort;
using nqp2::bridge::InstalledInterface;
using nqp2::bridge::kChannelFailed;
using nqp2::bridge::kDone;
using nqp2::bridge::kProxyChannelId;

namespace {

constexpr std::uint32_t kRequestSize = 45360000;
constexpr std::uint32_t kCallbackSize = 20480;
constexpr std::uint32_t kNoTimeout = 0x7FFFFFFF;
constexpr std::size_t kDataSize = nqp2::bridge::BufferMessage::kFrameBytes; // grows with replies

} // namespace

CTNQ264BitSupport::CTNQ264BitSupport() : m_table(nqp2::bridge::Installed().table) {}

CTNQ264BitSupport::~CTNQ264BitSupport() = default;

ChannelPort CTNQ264BitSupport::RequestPort() const {
    return nqp2::bridge::PortOf(m_table, m_requestChannel.get());
}

ChannelPort CTNQ264BitSupport::CallbackPort() const {
    return nqp2::bridge::PortOf(m_table, m_callbackChannel.get());
}

std::int32_t CTNQ264BitSupport::Open() {
    if (!nqp2::IsUsable(m_table) || !OpenRequestChannel() || !OpenCallbackChannel()) {
        return kChannelFailed;
    }
    StartServer();
    m_owner = {};
    m_opened = 1;
    return kDone;
}

bool CTNQ264BitSupport::OpenRequestChannel() {
    // Memory first, so that no channel is lost when it gives out.
    auto holder = std::make_unique<ChannelHolder>(kDataSize);
    holder->link->handle =
        m_table->CreateChannel(kProxyChannelId, kRequestSize, kRequestSize, kNoTimeout, kNoTimeout);
    if (holder->link->handle == 0) {
        return false;
    }
    // A channel left by an attempt that failed is not closed: kept, hosts rely on it.
    m_requestChannel = std::move(holder);
    return true;
}

bool CTNQ264BitSupport::OpenCallbackChannel() {
    auto holder = std::make_unique<ChannelHolder>();
    holder->link->handle = nqp2::bridge::OpenBeside(RequestPort(), kProxyChannelId, kCallbackSize,
                                                    kCallbackSize, kNoTimeout, kNoTimeout);
    if (holder->link->handle == 0) {
        return false;
    }
    m_callbackChannel = std::move(holder);
    return true;
}

void CTNQ264BitSupport::StartServer() {
    const InstalledInterface& installed = nqp2::bridge::Installed();
    if (installed.systemObject != nullptr && installed.table != nullptr) {
        m_requestServer = nqp2::bridge::StartRequestServer(installed.systemObject, installed.table,
                                                           m_callbackChannel->link->handle);
    }
}

std::int32_t CTNQ264BitSupport::Close() {
    if (m_opened == 0) {
        return kDone;
    }
    if (m_owner.IsThisProcess()) {
        StopProgressThread();
    } else if (m_progressThread != nullptr) {
        nqp2::bridge::ForgetThreadOfParent(std::move(*m_progressThread));
        m_progressThread.reset();
    }
    CloseChannelOf(m_requestChannel);
    CloseChannelOf(m_callbackChannel);
    m_requestServer.reset();
    m_opened = 0;
    return kDone;
}

void CTNQ264BitSupport::CloseChannelOf(Holder& holder) const {
    if (holder != nullptr && holder->link != nullptr && m_owner.IsThisProcess()) {
        nqp2::bridge::CloseThroughTable(m_table, holder->link->handle);
    }
    holder.reset();
}
