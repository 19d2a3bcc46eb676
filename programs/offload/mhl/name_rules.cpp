// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/name_rules.h"

#include "offload/mhl/xml_text.h"

#include <algorithm>

namespace nqp2::mhl {
namespace {

std::string PartFault(std::string_view part) {
    if (part.empty()) {
        return "has a part without a name";
    }
    return part == "." || part == ".." ? "leads out of its folder" : "";
}

} // namespace

std::string NameFault(std::string_view name) {
    switch (XmlTextFault(name)) {
    case XmlFault::NotUtf8:
        return "is no UTF-8";
    case XmlFault::Character:
        return "has a control character";
    case XmlFault::None:
        break;
    }
    return name.size() > kMaxPathBytes ? "is too long" : "";
}

std::string PathFault(std::string_view path) {
    if (path.size() > kMaxPathBytes) {
        return "is longer than " + std::to_string(kMaxPathBytes) + " bytes";
    }
    if (path.starts_with('/')) {
        return "is no path below the folder";
    }
    if (static_cast<std::size_t>(std::count(path.begin(), path.end(), '/')) >= kMaxPathParts) {
        return "has more than " + std::to_string(kMaxPathParts) + " parts";
    }
    for (std::string_view rest = path;;) {
        const std::string_view part = rest.substr(0, rest.find('/'));
        if (std::string fault = PartFault(part); !fault.empty()) {
            return fault;
        }
        if (part.size() == rest.size()) {
            return {};
        }
        rest.remove_prefix(part.size() + 1);
    }
}

} // namespace nqp2::mhl
