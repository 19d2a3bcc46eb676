// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bench/plain_read.h"

#include <array>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <system_error>
#include <unistd.h>

namespace nqp2::bench {
namespace {

/// Larger than any metadata file of a measuring card, so that one read takes a whole file.
using Buffer = std::array<char, 64 * 1024>;

[[noreturn]] void Fail(const std::string& path) {
    throw std::system_error(errno, std::generic_category(), path);
}

/// Up to a buffer of the file's bytes.
std::size_t ReadHead(const std::string& path, Buffer& buffer) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        Fail(path);
    }
    const ssize_t count = read(file, buffer.data(), buffer.size());
    if (count < 0) {
        Fail(path);
    }
    close(file);
    return static_cast<std::size_t>(count);
}

std::size_t ReadFile(const std::string& path, Buffer& buffer) {
    const std::size_t count = ReadHead(path, buffer);
    if (count == buffer.size()) {
        Fail(path);
    }
    return count;
}

/// Calls `visit` with the number of bytes that each file left in the buffer.
template <class Visit>
void ReadEach(const std::string& folder, Buffer& buffer, Visit visit,
              std::size_t (*read)(const std::string&, Buffer&) = ReadFile) {
    const std::vector<std::string> names = ListFolder(folder);
    std::string path = folder;
    const std::size_t folderLength = path.size();
    for (const std::string& name : names) {
        path.resize(folderLength);
        path += name;
        visit(read(path, buffer));
    }
}

} // namespace

std::string ClipFolder(const std::string& card) {
    return card + "/CONTENTS/CLIP/";
}

std::vector<std::string> ListClips(const std::string& card) {
    return ListFolder(ClipFolder(card));
}

std::vector<std::string> ListFolder(const std::string& path) {
    const auto closeFolder = [](DIR* folder) { closedir(folder); };
    const std::unique_ptr<DIR, decltype(closeFolder)> folder(opendir(path.c_str()), closeFolder);
    if (!folder) {
        Fail(path);
    }
    std::vector<std::string> names;
    while (const dirent* entry = readdir(folder.get())) {
        if (entry->d_name[0] != '.') {
            names.emplace_back(entry->d_name);
        }
    }
    return names;
}

std::size_t ReadOneAfterAnother(const std::string& card) {
    return ReadFolder(ClipFolder(card));
}

std::size_t ReadFolder(const std::string& folder) {
    Buffer buffer;
    std::size_t bytes = 0;
    ReadEach(folder, buffer, [&bytes](std::size_t count) { bytes += count; });
    return bytes;
}

std::size_t ReadHeads(const std::string& folder) {
    Buffer buffer;
    std::size_t bytes = 0;
    ReadEach(
        folder, buffer, [&bytes](std::size_t count) { bytes += count; }, ReadHead);
    return bytes;
}

std::vector<std::string> ReadDocuments(const std::string& card) {
    Buffer buffer;
    std::vector<std::string> documents;
    ReadEach(ClipFolder(card), buffer,
             [&](std::size_t count) { documents.emplace_back(buffer.data(), count); });
    return documents;
}

} // namespace nqp2::bench
