// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/installed_interface.h"
#include "NQP2ParserU/R8P2SysInterface.h"
#include "tests/bridge/fake_channel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nqp2::bridge {

using test::FakeChannels;
using Bytes = FakeChannels::Bytes;
using Rows = std::vector<std::string>;

/// Channels to a worker played by the test, installed without a system object: no request servers.
class WorkerTest : public testing::Test {
protected:
    WorkerTest() { R8P2Parser_SetSysInterface(nullptr, m_channels.Table()); }
    ~WorkerTest() override { R8P2Parser_SetSysInterface(nullptr, nullptr); }

    /// Numbers as messages carry them.
    static Bytes Image(const std::vector<std::uint32_t>& numbers) {
        Bytes bytes;
        for (const std::uint32_t number : numbers) {
            for (unsigned shift = 0; shift < 32; shift += 8) {
                bytes.push_back(static_cast<unsigned char>(number >> shift));
            }
        }
        return bytes;
    }
    /// The worker answers each request with its own bytes, the result in its place.
    void AnswerWith(std::uint32_t result) {
        m_channels.SetScript([=, this](const std::string& channel, std::uint32_t id, Bytes bytes) {
            // The result is the last field; one message has its data behind it.
            const std::size_t at = id == 20013 ? 4 : bytes.size() - 4;
            const Bytes image = Image({result});
            std::copy(image.begin(), image.end(), bytes.begin() + static_cast<long>(at));
            m_channels.Push(channel, id, bytes);
        });
    }
    /// The worker answers each request with these bytes.
    void AnswerWith(const Bytes& bytes) {
        m_channels.SetScript([=, this](const std::string& channel, std::uint32_t id, const Bytes&) {
            m_channels.Push(channel, id, bytes);
        });
    }

    FakeChannels m_channels;
};

} // namespace nqp2::bridge
