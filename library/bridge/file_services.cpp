// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/file_services.h"

#include <algorithm>

namespace nqp2::bridge {

namespace {

struct Entry {
    std::uint32_t messageId;
    std::int32_t (FileServices::*serve)(const ServiceCall& call);
};

constexpr Entry kEntries[] = {
    {500, &FileServices::Serve500},   {501, &FileServices::Serve501},
    {502, &FileServices::Serve502},   {503, &FileServices::Serve503},
    {504, &FileServices::Serve504},   {505, &FileServices::Serve505},
    {5000, &FileServices::Serve5000}, {5001, &FileServices::Serve5001},
    {5002, &FileServices::Serve5002}, {5003, &FileServices::Serve5003},
    {5004, &FileServices::Serve5004},
};

} // namespace

std::int32_t Serve(FileServices& services, std::uint32_t messageId, const ServiceCall& call) {
    const auto* entry = std::find_if(std::begin(kEntries), std::end(kEntries),
                                     [&](const Entry& e) { return e.messageId == messageId; });
    if (entry == std::end(kEntries)) {
        return 0;
    }
    const auto room = static_cast<std::int32_t>(call.reply.size());
    return std::clamp((services.*entry->serve)(call), 0, room);
}

} // namespace nqp2::bridge
