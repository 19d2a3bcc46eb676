// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/channel_port.h"

#include <limits>
#include <utility>

namespace nqp2::bridge {

std::span<unsigned char> ChannelPort::GrantedBuffer(std::int32_t* abortFlag) const {
    void* buffer = nullptr;
    std::int32_t capacity = 0;
    const bool granted =
        table->GetSendBuffer(handle, &buffer, &capacity, abortFlag) == kChannelDone;
    if (!granted || buffer == nullptr || capacity <= 0) {
        return {};
    }
    return {static_cast<unsigned char*>(buffer), static_cast<std::size_t>(capacity)};
}

bool ChannelPort::Send(std::uint32_t id, std::span<unsigned char> buffer,
                       std::int32_t length) const {
    return table->SendPacket(handle, id, buffer.data(), static_cast<std::uint32_t>(length)) ==
           kChannelDone;
}

ReceivedMessage::ReceivedMessage(const ChannelPort& port, std::int32_t* abortFlag) : m_port(port) {
    void* buffer = nullptr;
    m_status = port.table->ReceivePacket(port.handle, &m_id, &buffer, &m_length, abortFlag);
    m_buffer = static_cast<unsigned char*>(buffer);
}

ReceivedMessage::~ReceivedMessage() {
    m_port.table->ReleasePacket(m_port.handle, m_taken ? m_buffer : nullptr,
                                m_taken ? m_length : 0);
}

bool ReceivedMessage::Take() {
    constexpr std::uint32_t kMaxLength = std::numeric_limits<std::int32_t>::max();
    m_taken = HasArrived() && m_buffer != nullptr && m_length > 0 && m_length <= kMaxLength;
    return m_taken;
}

void CloseThroughTable(const SysInterfaceTable* table, ChannelHandle& handle) {
    if (table != nullptr && table->CloseChannel != nullptr) {
        table->CloseChannel(&handle);
    }
}

ChannelHandle OpenBeside(const ChannelPort& parent, std::uint32_t id, std::uint32_t sendSize,
                         std::uint32_t receiveSize, std::uint32_t sendTimeout,
                         std::uint32_t receiveTimeout) {
    const auto open = parent.table->OpenSubChannel;
    return open == nullptr
               ? 0
               : open(parent.handle, id, sendSize, receiveSize, sendTimeout, receiveTimeout);
}

OwnedChannel::OwnedChannel(OwnedChannel&& other) noexcept
    : m_port(std::exchange(other.m_port, ChannelPort())), m_owner(other.m_owner) {}

OwnedChannel& OwnedChannel::operator=(OwnedChannel&& other) noexcept {
    std::swap(m_port, other.m_port);
    std::swap(m_owner, other.m_owner);
    return *this;
}

OwnedChannel::~OwnedChannel() {
    if (m_port.handle != 0 && m_owner.IsThisProcess()) {
        CloseThroughTable(m_port.table, m_port.handle);
    }
}

} // namespace nqp2::bridge
