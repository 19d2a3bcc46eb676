// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/installed_interface.h"

#include "NQP2ParserU/R8P2SysInterface.h"

namespace nqp2::bridge {

InstalledInterface& Installed() {
    // Has no destructor: threads of the library may outlive static objects.
    static InstalledInterface installed;
    return installed;
}

} // namespace nqp2::bridge

using nqp2::bridge::Installed;

void R8P2Parser_SetSysInterface(void* systemObject, void* table) noexcept {
    Installed().systemObject = systemObject;
    Installed().table = static_cast<const nqp2::SysInterfaceTable*>(table);
    if (systemObject == nullptr || table == nullptr) {
        return;
    }
    // A server that runs already is lost, not stopped. Kept: hosts rely on it.
    Installed().server =
        nqp2::bridge::StartRequestServer(systemObject, Installed().table, 0).release();
}

void R8XDCAMParser_ResetSysInterface() noexcept {
    delete Installed().server;
    Installed().server = nullptr;
}
