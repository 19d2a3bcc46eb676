// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/address.h"

#include "console/console.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <iterator>
#include <string_view>

namespace nqp2::catalogue {
namespace {

constexpr std::string_view kSchemes[] = {"postgresql://", "postgres://"};
constexpr std::string_view kFileName = "/nqp2/catalogue.sqlite";

/// In small letters, with "%70" as "p": as the client library reads the names of parameters.
std::string Plain(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isEscape = text[i] == '%' && i + 2 < text.size() &&
                              std::isxdigit(static_cast<unsigned char>(text[i + 1])) != 0 &&
                              std::isxdigit(static_cast<unsigned char>(text[i + 2])) != 0;
        const char byte =
            isEscape ? static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16))
                     : text[i];
        plain += static_cast<char>(std::tolower(static_cast<unsigned char>(byte)));
        i += isEscape ? 2 : 0;
    }
    return plain;
}

Address ServerAt(std::string_view url, std::string_view scheme) {
    const std::string_view rest = url.substr(scheme.size());
    const std::size_t question = std::min(rest.find('?'), rest.size());
    const std::string_view place = rest.substr(0, question);
    // An @ may stand unescaped in a password; the last one ends it.
    const std::size_t at = place.rfind('@');
    const std::string_view user = place.substr(0, at == std::string_view::npos ? 0 : at);
    if (user.find(':') != std::string_view::npos ||
        Plain(rest.substr(question)).find("password") != std::string::npos) {
        throw tool::Failure("--db", "holds a password",
                            "others could read it; the client library takes one from ~/.pgpass, "
                            "PGPASSFILE or a service file",
                            tool::kUsage);
    }
    return {true, std::string(url), std::string(scheme) + std::string(place)};
}

/// What is meant for a server must not become the name of a file, and be told as one.
bool IsServerInOtherWords(const std::string& given) {
    const std::string plain = Plain(given);
    return plain.find("://") != std::string::npos || plain.starts_with("postgres:") ||
           plain.starts_with("postgresql:") || plain.find("password=") != std::string::npos;
}

std::string DataFolder() {
    const char* const data = std::getenv("XDG_DATA_HOME");
    if (data != nullptr && *data == '/') {
        return data;
    }
    const char* const home = std::getenv("HOME");
    if (home == nullptr || *home != '/') {
        throw tool::Failure("the catalogue", "has no place", "HOME is not set: give --db");
    }
    return std::string(home) + "/.local/share";
}

} // namespace

Address AddressOf(const std::string& given) {
    if (given.empty()) {
        const std::string path = DataFolder() + std::string(kFileName);
        return {false, path, path};
    }
    const auto* const scheme = std::find_if(std::begin(kSchemes), std::end(kSchemes),
                                            [&](auto each) { return given.starts_with(each); });
    if (scheme != std::end(kSchemes)) {
        return ServerAt(given, *scheme);
    }
    if (IsServerInOtherWords(given)) {
        throw tool::Failure("--db", "is no database", "expected a file or postgresql://...",
                            tool::kUsage);
    }
    return {false, given, given};
}

} // namespace nqp2::catalogue
