// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace nqp2::tool {

/// Makes things that are shown one after another: the caller and a few threads, where there are
/// any to be had, each make the next that nobody has begun. Little is held: what is large waits
/// until it is shown.
class WorkAhead {
public:
    static constexpr std::size_t kMostWorkers = 4; ///< the caller, number 0, among them
    static constexpr std::size_t kWindow = 32;     ///< things that are begun and not yet shown

    /// What is done with each thing, by its place in the order. Does not throw.
    struct Steps {
        /// Where there is one: comes first, for one thing after the other.
        std::function<void(std::size_t index)> begin;
        /// Makes it and tells how many bytes it takes until it was shown.
        std::function<std::size_t(std::size_t worker, std::size_t index)> make;
    };

    WorkAhead(std::size_t count, Steps steps);
    ~WorkAhead() { End(); }
    WorkAhead(const WorkAhead&) = delete;
    WorkAhead& operator=(const WorkAhead&) = delete;

    /// Without it all is left to the caller.
    void Start();
    /// Comes to each thing in its turn; the one before was shown. True when it is made; false when
    /// it was begun just now and is left to the caller.
    bool Reach(std::size_t index);

private:
    struct Made {
        bool isReady = false;
        std::size_t bytes = 0;
    };
    using Lock = std::unique_lock<std::mutex>;

    [[nodiscard]] Made& Of(std::size_t index) { return m_made[index % kWindow]; }
    [[nodiscard]] bool HasRoom() const;
    std::size_t BeginNext();
    void MakeNext(Lock& lock, std::size_t worker);
    void Work(std::size_t worker);
    void Release();
    void End();

    std::size_t m_count;
    Steps m_steps;
    std::mutex m_mutex;
    std::condition_variable m_isReady;
    std::condition_variable m_hasRoom;
    std::array<Made, kWindow> m_made;
    std::size_t m_begun = 0; ///< so many things have been begun,
    std::size_t m_shown = 0; ///< so many of them are no longer needed,
    std::size_t m_bytes = 0; ///< and so much is held of the others
    bool m_isAwaited = false;
    bool m_isOver = false;
    std::vector<std::thread> m_threads; ///< last: they use all others
};

} // namespace nqp2::tool
