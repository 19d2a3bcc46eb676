// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "fuzz/fuzz_target.h"
#include "platform/file_system.h"

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

namespace nqp2::fuzz {

/// Hands an input out in pieces; zeros and empty texts behind its end.
class ByteSource {
public:
    explicit ByteSource(Input input) : m_left(input) {}

    [[nodiscard]] bool IsEmpty() const { return m_left.empty(); }

    std::uint8_t Byte() {
        const Input byte = Bytes(1);
        return byte.empty() ? std::uint8_t{0} : byte.front();
    }
    /// Little-endian.
    std::uint32_t Number(std::size_t width) {
        std::uint32_t number = 0;
        for (std::size_t i = 0; i < width; ++i) {
            number |= std::uint32_t{Byte()} << 8 * i;
        }
        return number;
    }
    Input Bytes(std::size_t count) {
        const Input taken = m_left.first(std::min(count, m_left.size()));
        m_left = m_left.subspan(taken.size());
        return taken;
    }
    std::string_view Take(std::size_t count) { return AsText(Bytes(count)); }
    /// A byte that chooses from the table, or that counts the bytes of a text of its own.
    template <std::size_t Count>
    std::string Text(const char* const (&table)[Count]) {
        constexpr std::uint8_t kOwn = 0x80;
        const std::uint8_t choice = Byte();
        return (choice & kOwn) == 0 ? table[choice % Count] : std::string(Take(choice & 0x3FU));
    }

private:
    Input m_left;
};

/// Folders and files in memory. A folder exists when it was made and when something is in it.
class MemoryFiles final : public platform::FileSystem {
public:
    /// Adds what an input describes, below `root`, until it ends: for each entry the byte of a path
    /// (ByteSource::Text with the names that mean something on a card), the length in two bytes and
    /// the content. A path that ends in "/" makes a folder.
    void AddFrom(ByteSource& input, const std::string& root);

    std::map<std::string, std::string> files; ///< by path; folders end in "/"

    platform::IoStatus Stat(const std::string& path, platform::FileInfo& info) override;
    platform::IoStatus List(const std::string& folder,
                            std::vector<platform::FolderEntry>& entries) override;
    platform::IoStatus Open(const std::string& path,
                            std::unique_ptr<platform::FileReader>& reader) override;
    platform::IoStatus Read(const std::string& path, std::uint64_t limit,
                            std::string& content) override;
    platform::IoStatus FreeSpace(const std::string& path, std::uint64_t& bytes) override;
    platform::IoStatus OpenFolder(const std::string& path,
                                  std::unique_ptr<platform::Folder>& folder) override;
};

} // namespace nqp2::fuzz
