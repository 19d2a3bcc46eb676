// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <span>

namespace nqp2::bridge {

/// A request of the worker and the room for the reply to it.
struct ServiceCall {
    std::span<unsigned char> request; ///< not empty; foreign bytes that may change meanwhile
    std::span<unsigned char> reply;
};

/// What a host does for its worker: one function for each message number. Each returns the length
/// of the reply that it wrote. Here a host's services plug in; without them every reply has length
/// 0. Called on the threads of the connections, several at a time.
class FileServices {
public:
    explicit FileServices(void* systemObject) : m_systemObject(systemObject) {}
    FileServices(const FileServices&) = delete;
    FileServices& operator=(const FileServices&) = delete;
    virtual ~FileServices() = default;

    virtual std::int32_t Serve500(const ServiceCall& /*call*/) { return 0; }
    virtual std::int32_t Serve501(const ServiceCall& /*call*/) { return 0; }
    virtual std::int32_t Serve502(const ServiceCall& /*call*/) { return 0; }
    virtual std::int32_t Serve503(const ServiceCall& /*call*/) { return 0; }
    virtual std::int32_t Serve504(const ServiceCall& /*call*/) { return 0; }
    virtual std::int32_t Serve505(const ServiceCall& /*call*/) { return 0; }
    virtual std::int32_t Serve5000(const ServiceCall& /*call*/) { return 0; }
    virtual std::int32_t Serve5001(const ServiceCall& /*call*/) { return 0; }
    virtual std::int32_t Serve5002(const ServiceCall& /*call*/) { return 0; }
    virtual std::int32_t Serve5003(const ServiceCall& /*call*/) { return 0; }
    virtual std::int32_t Serve5004(const ServiceCall& /*call*/) { return 0; }

protected:
    /// The host's object, as it was given to R8P2Parser_SetSysInterface.
    [[nodiscard]] void* SystemObject() const { return m_systemObject; }

private:
    void* m_systemObject;
};

/// Calls the function for that number. The reply's length: 0 for numbers that have none, and never
/// more than there is room.
std::int32_t Serve(FileServices& services, std::uint32_t messageId, const ServiceCall& call);

} // namespace nqp2::bridge
