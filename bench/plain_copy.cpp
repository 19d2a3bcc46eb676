// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// The least that a proven copy takes: cp, flushing, and checksums of both sides by the hash that
// the worker uses, the copy read from the medium.
//
//     plain_copy both|once FILE... FOLDER
//     plain_copy tree|flushed SOURCE FOLDER
//     plain_copy read FOLDER
//
// once: without reading the copy again, as a recording is written. tree: a whole folder by cp -a,
// with one flush. flushed: the same without any checksum. read: only the checksums of a folder.

#include "bench/measure.h"
#include "bench/run_program.h"
#include "platform/descriptor.h"

#include <cerrno>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <unistd.h>
#include <vector>
#include <xxhash.h>

namespace nqp2::bench {
namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20U;

platform::Descriptor Open(const std::string& path) {
    platform::Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.Get() < 0) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    return file;
}

XXH128_hash_t Checksum(const std::string& path, std::string& block) {
    const platform::Descriptor file = Open(path);
    const std::unique_ptr<XXH3_state_t, XXH_errorcode (*)(XXH3_state_t*)> state(XXH3_createState(),
                                                                                XXH3_freeState);
    XXH3_128bits_reset(state.get());
    ssize_t count = 0;
    while ((count = read(file.Get(), block.data(), block.size())) > 0) {
        XXH3_128bits_update(state.get(), block.data(), static_cast<std::size_t>(count));
    }
    Require(count == 0, "a file cannot be read");
    return XXH3_128bits_digest(state.get());
}

void Forget(const platform::Descriptor& file) {
    Require(posix_fadvise(file.Get(), 0, 0, POSIX_FADV_DONTNEED) == 0, "a copy cannot be dropped");
}

void FlushAndForget(const std::string& path) {
    const platform::Descriptor file = Open(path);
    Require(fsync(file.Get()) == 0, "a copy cannot be flushed");
    Forget(file);
}

void RequireSame(const std::string& file, const std::string& copy, std::string& block) {
    Require(XXH128_isEqual(Checksum(file, block), Checksum(copy, block)) != 0,
            "the copy is no copy");
}

void CopyTree(const std::string& source, const std::string& folder, bool isCompared) {
    RunProgram({"cp", "-a", "--", source + "/.", folder});
    Require(syncfs(Open(folder).Get()) == 0, "a copy cannot be flushed");
    std::string block(kBlock, '\0');
    using Below = std::filesystem::recursive_directory_iterator;
    for (const auto& entry : isCompared ? Below(source) : Below()) {
        if (entry.is_regular_file()) {
            const std::string copy = folder / entry.path().lexically_relative(source);
            Forget(Open(copy));
            RequireSame(entry.path(), copy, block);
        }
    }
}

void ReadTree(const std::string& folder) {
    std::string block(kBlock, '\0');
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            static_cast<void>(Checksum(entry.path(), block));
        }
    }
}

void CopyAll(const std::vector<std::string>& files, const std::string& folder, bool both) {
    std::vector<std::string> command = {"cp", "--"};
    command.insert(command.end(), files.begin(), files.end());
    command.push_back(folder);
    RunProgram(command);
    std::string block(kBlock, '\0');
    for (const std::string& file : files) {
        const std::string copy =
            (std::filesystem::path(folder) / std::filesystem::path(file).filename()).string();
        FlushAndForget(copy);
        const XXH128_hash_t checksum = Checksum(file, block);
        Require(!both || XXH128_isEqual(checksum, Checksum(copy, block)) != 0,
                "the copy is no copy");
    }
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    const std::string sides = argc < 4 ? "" : argv[1];
    const bool isTree = (sides == "tree" || sides == "flushed") && argc == 4;
    const bool isRead = argc == 3 && std::string(argv[1]) == "read";
    if (!isTree && !isRead && sides != "both" && sides != "once") {
        std::fprintf(stderr, "usage: plain_copy both|once FILE... FOLDER\n"
                             "       plain_copy tree|flushed SOURCE FOLDER\n"
                             "       plain_copy read FOLDER\n");
        return 2;
    }
    try {
        if (isRead) {
            nqp2::bench::ReadTree(argv[2]);
            return 0;
        }
        if (isTree) {
            nqp2::bench::CopyTree(argv[2], argv[3], sides == "tree");
            return 0;
        }
        nqp2::bench::CopyAll({argv + 2, argv + argc - 1}, argv[argc - 1], sides == "both");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "plain_copy: %s\n", error.what());
        return 1;
    }
    return 0;
}
