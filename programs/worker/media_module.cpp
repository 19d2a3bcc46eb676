// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/media_module.h"

#include "NQP2ParserU/ProgramFolder.h"

#include <dlfcn.h>
#include <mutex>

namespace nqp2::worker {
namespace {

Outcome Unusable(const std::string& reason) {
    return Failure("Camera files and recordings need a part of the worker that cannot be used: " +
                   reason + ".");
}

std::string LinkerReason() {
    const char* const reason = dlerror();
    return reason != nullptr ? reason : "no reason given";
}

/// Nothing is searched for: a module of that name elsewhere is somebody else's. It stays loaded, as
/// libavformat's tables are not made to go.
Outcome Load(const MediaModule*& module) {
    const std::string path = ProgramFolder() + "/" NQP2_MEDIA_MODULE;
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    void* const entry = library != nullptr ? dlsym(library, kMediaModuleEntry) : nullptr;
    if (entry == nullptr) {
        return Unusable(LinkerReason());
    }
    module = reinterpret_cast<MediaModuleEntry>(entry)(NQP2_VERSION);
    return module != nullptr ? Outcome() : Unusable(path + " is of another version");
}

} // namespace

Outcome LoadMediaModule(const MediaModule*& module) {
    static std::mutex& mutex = *new std::mutex; // sessions may outlive static objects
    static const MediaModule* loaded = nullptr;
    const std::lock_guard lock(mutex);
    Outcome outcome = loaded == nullptr ? Load(loaded) : Outcome();
    module = loaded;
    return outcome;
}

} // namespace nqp2::worker
