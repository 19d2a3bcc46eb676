// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/worker_proxy.h"

#include "NQP2ParserU/R8P2SysInterface.h"

#include <algorithm>

using nqp2::bridge::ChannelHolder;
using nqp2::bridge::ChannelPort;
using nqp2::bridge::Installed;
using nqp2::bridge::InstalledInterface;
using nqp2::bridge::kChannelFailed;
using nqp2::bridge::kDone;
using nqp2::bridge::kProxyChannelId;
using nqp2::bridge::RequestServer;

namespace {

constexpr std::uint32_t kRequestSize = 45360000;
constexpr std::uint32_t kCallbackSize = 20480;
constexpr std::uint32_t kNoTimeout = 0x7FFFFFFF;
constexpr std::size_t kDataSize = nqp2::bridge::BufferMessage::kFrameBytes; // grows with replies

/// The channel behind a proxy's holder; nothing can be asked on one without a table.
ChannelPort PortOf(const nqp2::SysInterfaceTable* table, const ChannelHolder* holder) {
    const bool isOpen = nqp2::IsUsable(table) && holder != nullptr && holder->link != nullptr;
    return isOpen ? ChannelPort{table, holder->link->handle} : ChannelPort{};
}

} // namespace

namespace nqp2::bridge {

unsigned char* ChannelHolder::Keep(std::span<const unsigned char> bytes) {
    if (bytes.size() > dataSize) {
        link->data.reset(new unsigned char[bytes.size()]);
        dataSize = bytes.size();
    }
    std::copy(bytes.begin(), bytes.end(), link->data.get());
    return link->data.get();
}

InstalledInterface& Installed() {
    // Has no destructor: threads of the library may outlive static objects.
    static InstalledInterface installed;
    return installed;
}

} // namespace nqp2::bridge

void R8P2Parser_SetSysInterface(void* systemObject, void* table) noexcept {
    Installed().systemObject = systemObject;
    Installed().table = static_cast<const nqp2::SysInterfaceTable*>(table);
    if (systemObject == nullptr || table == nullptr) {
        return;
    }
    // A server that runs already is lost, not stopped. Kept: hosts rely on it.
    Installed().server = RequestServer::Start(Installed().table, 0).release();
}

void R8XDCAMParser_ResetSysInterface() noexcept {
    delete Installed().server;
    Installed().server = nullptr;
}

CTNQ264BitSupport::CTNQ264BitSupport() : m_table(Installed().table) {}

CTNQ264BitSupport::~CTNQ264BitSupport() = default;

ChannelPort CTNQ264BitSupport::RequestPort() const {
    return PortOf(m_table, m_requestChannel.get());
}

ChannelPort CTNQ264BitSupport::CallbackPort() const {
    return PortOf(m_table, m_callbackChannel.get());
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
    // Memory first, so that no channel is lost without it.
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
    const InstalledInterface& installed = Installed();
    if (installed.systemObject != nullptr && installed.table != nullptr) {
        m_requestServer = RequestServer::Start(installed.table, m_callbackChannel->link->handle);
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
