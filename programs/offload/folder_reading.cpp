// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/folder_reading.h"

#include "copy/failure.h"
#include "copy/fan.h"
#include "platform/file_system.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace nqp2::offload {

using copy::FanItem;
using mhl::NodeId;

/// What the readers share.
class FolderReading::Queue {
public:
    Queue(FolderReading& reading, const mhl::Tree& tree)
        : m_reading(reading), m_tree(tree), m_next(tree.FirstInPostOrder(mhl::kScope)) {}

    /// The file that is read next; nothing when there is none left or a reader has failed.
    std::optional<FanItem> Next() {
        const std::lock_guard lock(m_mutex);
        while (m_next != mhl::kNoNode && m_tree.IsFolder(m_next)) {
            m_next = m_tree.NextInPostOrder(m_next, mhl::kScope);
        }
        if (m_next == mhl::kNoNode || m_trouble != nullptr) {
            return std::nullopt;
        }
        const NodeId node = std::exchange(m_next, m_tree.NextInPostOrder(m_next, mhl::kScope));
        m_reading.m_state.file = m_tree.PathOf(node);
        return FanItem{m_reading.m_state.file, m_reading.m_index.InfoOf(node), node};
    }
    bool GoesOn(std::uint64_t moreBytes) {
        const std::lock_guard lock(m_mutex);
        m_reading.m_state.bytes += moreBytes;
        return m_trouble == nullptr && m_reading.m_watch.GoesOn(m_reading.m_state);
    }
    void HasRead(const FanItem& file, const mhl::Hashes& hashes) {
        const std::lock_guard lock(m_mutex);
        ++m_reading.m_state.files;
        m_reading.m_watch.HasRead(static_cast<NodeId>(file.number), hashes);
    }
    void CannotRead(const FanItem& file, const std::string& sentence) {
        const std::lock_guard lock(m_mutex);
        ++m_reading.m_state.files;
        m_reading.m_watch.CannotRead(static_cast<NodeId>(file.number), sentence);
    }

    /// Keeps what a reader has ended with: the first is what the others end for.
    void Fail(std::exception_ptr trouble) {
        const std::lock_guard lock(m_mutex);
        if (m_trouble == nullptr) {
            m_trouble = std::move(trouble);
        }
    }
    void Rethrow() const {
        if (m_trouble != nullptr) {
            std::rethrow_exception(m_trouble);
        }
    }

private:
    FolderReading& m_reading;
    const mhl::Tree& m_tree;
    std::mutex m_mutex;
    NodeId m_next;
    std::exception_ptr m_trouble;
};

/// Reads one file after the other, by a fan that has no targets.
class FolderReading::Reader final : public copy::FanReport {
public:
    Reader(const FolderReading& reading, Queue& queue, std::size_t readers)
        : m_queue(queue), m_hashes(reading.m_all, reading.m_formatsOf) {
        copy::Require(platform::Files().OpenFolder(reading.m_folder, m_root), "open",
                      reading.m_folder);
        copy::FanSettings settings;
        settings.mostInFlight /= readers;
        settings.block = std::min<std::size_t>(settings.block, settings.mostInFlight / 4);
        m_fan = std::make_unique<copy::Fan>(*m_root, std::vector<copy::FanRoot>(),
                                            m_hashes.Takers(), *this, settings);
    }

    void Run() {
        while (const std::optional<FanItem> file = m_queue.Next()) {
            m_fan->Copy(*file);
        }
        m_fan->Finish();
        static_cast<void>(GoesOn());
    }

    bool GoesOn() override {
        const std::uint64_t before = std::exchange(m_told, m_fan ? m_fan->BytesRead() : 0);
        return m_queue.GoesOn(m_told - before);
    }
    void HasRead(const FanItem& file, const copy::Digest::Bytes& digest) override {
        m_queue.HasRead(file, m_hashes.Take(file, digest));
    }
    void CannotRead(const FanItem& file, const std::string& sentence) override {
        m_queue.CannotRead(file, sentence);
    }
    // There are no targets.
    void HasArrived(std::size_t /*target*/, const FanItem& /*file*/,
                    copy::Arrival /*how*/) override {}
    void HasSetAside(std::size_t /*target*/, const FanItem& /*file*/,
                     const std::string& /*aside*/) override {}
    void HasFailed(std::size_t /*target*/, const FanItem& /*item*/,
                   const std::string& /*sentence*/) override {}
    void HasEnded(std::size_t /*target*/, const std::string& /*sentence*/) override {}

private:
    Queue& m_queue;
    FileHashes m_hashes;
    std::unique_ptr<platform::Folder> m_root;
    std::uint64_t m_told = 0; ///< bytes
    std::unique_ptr<copy::Fan> m_fan;
};

FolderReading::FolderReading(std::string folder, const FolderIndex& index, mhl::FormatSet all,
                             FormatsOfFile formatsOf, ReadingWatch& watch)
    : m_folder(std::move(folder)), m_index(index), m_all(all), m_formatsOf(std::move(formatsOf)),
      m_watch(watch) {}

void FolderReading::Run(std::size_t readers) {
    Queue queue(*this, m_index.tree);
    const auto read = [&] {
        try {
            Reader(*this, queue, readers).Run();
        } catch (...) {
            queue.Fail(std::current_exception());
        }
    };
    std::vector<std::thread> others;
    try {
        while (others.size() + 1 < readers) {
            others.emplace_back(read);
        }
    } catch (const std::system_error&) {
        // There are no more threads to be had: those that there are do it.
    }
    read();
    for (std::thread& other : others) {
        other.join();
    }
    queue.Rethrow();
}

std::size_t ReadersFor(platform::Folder& folder) {
    constexpr std::size_t kMost = 4;
    platform::MediumFacts facts;
    if (!folder.Medium(facts)) {
        return 1;
    }
    const auto turns = [](const std::string& disk) {
        std::string text;
        return platform::Files().Read("/sys/dev/block/" + disk + "/queue/rotational", 16, text) &&
               text.starts_with('1');
    };
    const bool mayTurn = std::any_of(facts.disks.begin(), facts.disks.end(), turns);
    return mayTurn ? 1 : std::clamp<std::size_t>(std::thread::hardware_concurrency(), 2, kMost);
}

} // namespace nqp2::offload
