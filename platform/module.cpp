// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/module.h"

#include "platform/case_fold.h"
#include "platform/hook.h"
#include "platform/PathText.h"
#include "platform/SystemFolder.h"

#include <dlfcn.h>
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

} // namespace

FolderLookup SetSystemFolderLookup(FolderLookup lookup) {
    return FolderHook().Exchange(std::move(lookup));
}

namespace platform {

CString SystemFolder() {
    const FolderLookup lookup = FolderHook().Get();
    return lookup ? lookup() : InterfaceRoot(NQP2_SYSTEM_LIBRARY_FOLDER);
}

ModuleHandle LoadModule(const CString& path) {
    const std::string library = LibraryPath(PosixPath(path));
    return library.empty() ? nullptr : dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
}

void* ModuleEntry(ModuleHandle module, const char* name) {
    return module != nullptr ? dlsym(module, name) : nullptr;
}

void FreeModule(ModuleHandle module) {
    if (module != nullptr) {
        dlclose(module);
    }
}

} // namespace platform
} // namespace nqp2
