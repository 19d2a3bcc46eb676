// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/module.h"

#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/SystemFolder.h"
#include "platform/case_fold.h"
#include "platform/hook.h"

#include <dlfcn.h>
#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace nqp2 {
namespace {

constexpr std::string_view kWindowsExtension = ".DLL";

// Never destroyed: a host's static objects may still ask while the process ends.
platform::Hook<CString()>& FolderHook() {
    static auto& hook = *new platform::Hook<CString()>;
    return hook;
}

/// "FOLDER/libname.so" for "FOLDER/name.dll"; empty for a path without folder or name.
std::string LibraryPath(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return {};
    }
    std::string name = path.substr(slash + 1);
    if (platform::FoldNameCase(name).ends_with(kWindowsExtension)) {
        name.resize(name.size() - kWindowsExtension.size());
    }
    return name.empty() ? std::string() : path.substr(0, slash + 1) + "lib" + name + ".so";
}

/// How often each module was loaded and not yet freed. The system's own count cannot be asked, and
/// objects that were assigned to each other free one module twice.
class LoadCounts {
public:
    void Add(platform::ModuleHandle module) {
        const std::lock_guard lock(m_mutex);
        ++m_counts[module];
    }
    /// False when the module is not held.
    bool Take(platform::ModuleHandle module) {
        const std::lock_guard lock(m_mutex);
        const auto found = m_counts.find(module);
        if (found == m_counts.end()) {
            return false;
        }
        if (--found->second == 0) {
            m_counts.erase(found);
        }
        return true;
    }

private:
    std::mutex m_mutex;
    std::map<platform::ModuleHandle, int> m_counts;
};

LoadCounts& Loaded() {
    static auto& counts = *new LoadCounts;
    return counts;
}

} // namespace

FolderLookup SetSystemFolderLookup(FolderLookup lookup) noexcept {
    return FolderHook().Exchange(std::move(lookup));
}

namespace platform {

CString SystemFolder() {
    const FolderLookup lookup = FolderHook().Get();
    return lookup ? lookup() : InterfaceRoot(NQP2_SYSTEM_LIBRARY_FOLDER);
}

ModuleHandle LoadModule(const CString& path) {
    const std::string library = LibraryPath(PosixPath(path));
    if (library.empty()) {
        return nullptr;
    }
    const ModuleHandle module = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (module != nullptr) {
        Loaded().Add(module);
    }
    return module;
}

void* ModuleEntry(ModuleHandle module, const char* name) {
    return module != nullptr ? dlsym(module, name) : nullptr;
}

void FreeModule(ModuleHandle module) {
    if (Loaded().Take(module)) {
        dlclose(module);
    }
}

} // namespace platform
} // namespace nqp2
