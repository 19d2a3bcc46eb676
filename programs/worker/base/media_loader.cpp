// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/base/media_loader.h"

#include "copy/failure.h"
#include "NQP2ParserU/ProgramFolder.h"
#include "platform/descriptor.h"
#include "platform/io_status.h"

#include <array>
#include <cerrno>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <mutex>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace nqp2::worker {
namespace {

copy::Failure Unusable(const std::string& reason) {
    return copy::Failure(
        "Camera files and recordings need a part of the worker that cannot be used: " + reason +
        ".");
}

/// Some of libavformat's libraries end the process when they cannot open a file as they are loaded,
/// which takes long enough for others to open theirs.
void RequireDescriptors() {
    std::array<platform::Descriptor, 16> free;
    for (platform::Descriptor& each : free) {
        each = platform::Descriptor(open("/", O_PATH | O_CLOEXEC));
        if (!each) {
            throw Unusable(platform::SystemStatus(errno).reason);
        }
    }
}

/// Mapping a file that was copied in part would end the process too, and opening a pipe would wait
/// for its writer, past the end of all hosts. A file's table of sections comes last.
void RequireWhole(const std::string& path) {
    const platform::Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat facts {};
    ElfW(Ehdr) head{};
    const bool isKnown = file && fstat(file.Get(), &facts) == 0;
    if (isKnown && !S_ISREG(facts.st_mode)) {
        throw Unusable(path + " is no file");
    }
    if (isKnown && read(file.Get(), &head, sizeof head) == static_cast<ssize_t>(sizeof head) &&
        head.e_shoff + std::uint64_t{head.e_shnum} * head.e_shentsize >
            static_cast<std::uint64_t>(facts.st_size)) {
        throw Unusable(path + " is cut off");
    }
}

/// Nothing is searched for: a module of that name elsewhere is another one. It stays loaded, as
/// libavformat's tables are not made to go.
const MediaModule* Load() {
    const std::string path = ProgramFolder() + "/" NQP2_MEDIA_MODULE;
    RequireDescriptors();
    RequireWhole(path);
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    void* const entry = library != nullptr ? dlsym(library, kMediaModuleEntry) : nullptr;
    if (entry == nullptr) {
        const char* const reason = dlerror();
        throw Unusable(reason != nullptr ? reason : "no reason given");
    }
    const MediaModule* const module = reinterpret_cast<MediaModuleEntry>(entry)(NQP2_VERSION);
    if (module == nullptr) {
        throw Unusable(path + " is of another version");
    }
    return module;
}

} // namespace

const MediaModule& LoadMediaModule() {
    static std::mutex& mutex = *new std::mutex; // sessions may outlive static objects
    static const MediaModule* loaded = nullptr;
    const std::lock_guard lock(mutex);
    if (loaded == nullptr) {
        loaded = Load();
    }
    return *loaded;
}

} // namespace nqp2::worker
