// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bench/slow_link.h"

#include "bench/measure.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace nqp2::bench {
namespace {

using Time = std::chrono::steady_clock::time_point;

sockaddr_un AddressOf(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    Require(path.size() < sizeof address.sun_path, "the path of a socket is too long");
    path.copy(address.sun_path, path.size());
    return address;
}

int SocketTo(const std::string& path) {
    const sockaddr_un address = AddressOf(path);
    const int made = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    Require(connect(made, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0,
            "no server to connect to");
    return made;
}

bool WriteAll(int socket, const std::string& bytes) {
    std::size_t at = 0;
    while (at < bytes.size()) {
        const ssize_t count = send(socket, bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
        if (count <= 0) {
            return false;
        }
        at += static_cast<std::size_t>(count);
    }
    return true;
}

/// One way of a connection: what was read, and when it is due.
class Way {
public:
    Way(int from, int to, std::chrono::microseconds delay)
        : m_from(from), m_to(to), m_delay(delay) {}

    void Read() {
        std::string bytes(256 * 1024, '\0');
        for (;;) {
            const ssize_t count = recv(m_from, bytes.data(), bytes.size(), 0);
            Push(count > 0 ? bytes.substr(0, static_cast<std::size_t>(count)) : std::string());
            if (count <= 0) {
                return;
            }
        }
    }
    void Write() {
        for (;;) {
            const auto [due, bytes] = Pop();
            std::this_thread::sleep_until(due);
            if (bytes.empty() || !WriteAll(m_to, bytes)) {
                shutdown(m_to, SHUT_WR);
                return;
            }
        }
    }

private:
    using Piece = std::pair<Time, std::string>; ///< empty: the end

    void Push(std::string bytes) {
        const std::lock_guard lock(m_mutex);
        m_pieces.emplace_back(std::chrono::steady_clock::now() + m_delay, std::move(bytes));
        m_isThere.notify_one();
    }
    Piece Pop() {
        std::unique_lock lock(m_mutex);
        m_isThere.wait(lock, [this] { return !m_pieces.empty(); });
        Piece piece = std::move(m_pieces.front());
        m_pieces.pop_front();
        return piece;
    }

    int m_from;
    int m_to;
    std::chrono::microseconds m_delay;
    std::mutex m_mutex;
    std::condition_variable m_isThere;
    std::deque<Piece> m_pieces;
};

void Connect(int client, int server, std::chrono::microseconds delay) {
    Way there(client, server, delay);
    Way back(server, client, delay);
    std::thread threads[] = {std::thread([&] { there.Read(); }),
                             std::thread([&] { there.Write(); }), std::thread([&] { back.Read(); }),
                             std::thread([&] { back.Write(); })};
    for (std::thread& each : threads) {
        each.join();
    }
    close(client);
    close(server);
}

} // namespace

struct SlowLink::State {
    int listener = -1;
    std::string target;
    std::chrono::microseconds delay;
};

SlowLink::SlowLink(const std::string& path, std::string target, std::chrono::microseconds delay)
    : m_state(std::make_shared<State>()) {
    m_state->target = std::move(target);
    m_state->delay = delay;
    m_state->listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_un address = AddressOf(path);
    unlink(path.c_str());
    Require(bind(m_state->listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
                    0 &&
                listen(m_state->listener, SOMAXCONN) == 0,
            "no socket to listen at");
    // They end with what they connect, at the latest with the program.
    std::thread([state = m_state] {
        for (int client = 0; (client = accept(state->listener, nullptr, nullptr)) >= 0;) {
            std::thread(Connect, client, SocketTo(state->target), state->delay).detach();
        }
    }).detach();
}

SlowLink::~SlowLink() {
    shutdown(m_state->listener, SHUT_RDWR);
}

} // namespace nqp2::bench
