// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/worker_proxy.h"
#include "channel/abort_bell.h"
#include "channel/slots.h"

#include <chrono>
#include <future>
#include <utility>

using nqp2::bridge::ChannelPort;
using nqp2::bridge::Heard;
using nqp2::bridge::kChannelFailed;
using nqp2::bridge::kDone;
using nqp2::bridge::MessageId;
using nqp2::bridge::Number;
using nqp2::bridge::ProgressMessage;
using nqp2::bridge::ReceivedMessage;
using nqp2::bridge::ResultMessage;
using nqp2::channel::FlagValue;
using nqp2::channel::IsSet;
using nqp2::channel::SetFlag;

namespace {

constexpr std::chrono::milliseconds kShortPause(10);
constexpr std::chrono::milliseconds kPause(100);

} // namespace

std::int32_t CTNQ264BitSupport::SetImpCallBack(nqp2::ImpCallBack callback, void* context) {
    {
        // Both at once: the progress thread must not call one host with another one's pointer.
        const std::lock_guard guard(m_lock);
        m_callback = callback;
        m_context = context;
    }
    if (m_progressThread != nullptr && IsSet(m_running)) {
        return kDone;
    }
    const ChannelPort port = CallbackPort();
    if (port.table == nullptr) {
        return kChannelFailed;
    }
    // The thread comes first: once told that a host listens, the worker waits for answers.
    std::promise<void> registered;
    StartProgressThread(registered.get_future());
    ResultMessage message;
    if (!Exchange(port, MessageId::RegisterProgress, message)) {
        registered = {}; // ends the wait
        m_progressThread->join();
        m_progressThread.reset();
        return kChannelFailed;
    }
    SetFlag(m_running, 1);
    registered.set_value();
    return message.result;
}

void CTNQ264BitSupport::StartProgressThread(std::future<void> registered) {
    if (m_progressThread != nullptr) {
        // One that ended with its channel. It is not stopped, for that would ask to abort.
        m_progressThread->join();
        m_progressThread.reset();
    }
    m_progressThread = std::make_unique<std::thread>([this, registered = std::move(registered)] {
        registered.wait(); // also over when nothing was registered: then it does not run
        RunProgressThread();
    });
}

void CTNQ264BitSupport::StopProgressThread() {
    if (m_progressThread == nullptr) {
        return;
    }
    {
        const std::lock_guard guard(m_lock);
        SetFlag(m_running, 0);
        nqp2::channel::RaiseFlag(m_abort);
    }
    m_progressThread->join();
    m_progressThread.reset();
}

void CTNQ264BitSupport::RunProgressThread() {
    const nqp2::channel::RungFlag isRung(m_abort);
    while (IsSet(m_running)) {
        const ChannelPort port = CallbackPort();
        if (port.table == nullptr) {
            std::this_thread::sleep_for(kShortPause);
            continue;
        }
        const Heard heard = HearProgress(port);
        if (heard == Heard::Closed) {
            break;
        }
        if (heard == Heard::NothingOfUse && IsSet(m_running)) {
            std::this_thread::sleep_for(kPause);
        }
    }
    const std::lock_guard guard(m_lock);
    SetFlag(m_abort, 0);
    SetFlag(m_running, 0);
}

Heard CTNQ264BitSupport::HearProgress(const ChannelPort& port) {
    ProgressMessage message;
    {
        ReceivedMessage received(port, &m_abort);
        if (!received.Take() || received.Id() != Number(MessageId::Progress)) {
            return received.IsClosed() ? Heard::Closed : Heard::NothingOfUse;
        }
        // One that is cut off leaves both values 0; the host is told all the same.
        static_cast<void>(message.Restore(received.Bytes().data(), received.Length()));
        AskHost(message.position, message.total);
    }
    message.abort = FlagValue(m_abort);
    if (!SendMessage(port, &m_abort, MessageId::Progress, message)) {
        std::this_thread::sleep_for(kShortPause);
    }
    return Heard::Served;
}

void CTNQ264BitSupport::AskHost(std::uint32_t position, std::uint32_t total) {
    std::unique_lock guard(m_lock);
    const nqp2::ImpCallBack callback = m_callback;
    void* const context = m_context;
    // The host writes to a copy, since the flag itself is written by Close as well.
    std::int32_t abort = FlagValue(m_abort);
    if (callback == nullptr || context == nullptr) {
        return;
    }
    guard.unlock();
    try {
        callback(position, total, abort, context);
    } catch (...) {
        abort = 1;
    }
    guard.lock();
    if (IsSet(m_running)) { // else a close has asked to abort, which the host does not take back
        SetFlag(m_abort, abort);
    }
}
