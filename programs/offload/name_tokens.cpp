// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/name_tokens.h"

#include "console/console.h"
#include "media/card_layout.h"
#include "offload/mhl/chain.h"
#include "offload/mhl/ignore.h"
#include "offload/mhl/name_rules.h"
#include "platform/case_fold.h"
#include "platform/durable_file.h"
#include "platform/folder.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>

namespace nqp2::offload {
namespace {

using tool::kUsage;

struct Token {
    std::string_view name;
    std::string NameFacts::*value;
    const char* missing;
};
constexpr std::array<Token, 4> kTokens = {{
    {"card", &NameFacts::card, "its folder has no name"},
    {"serial", &NameFacts::serial, "neither its clips nor its volume tell a serial number"},
    {"date", &NameFacts::date, "neither its clips nor its files tell a day"},
    {"project", &NameFacts::project, "no clip names a programme"},
}};
constexpr std::string_view kCounter = "counter";

/// Names that volumes have when nobody named them, and folders in which volumes are put.
constexpr std::array<std::string_view, 16> kGenericNames = {
    "untitled", "no name", "no_name", "noname", "unnamed",  "new volume", "volume", "disk",
    "usb disk", "usbdisk", "sd_card", "card",   "contents", "private",    "media",  "mnt"};

/// Bytes that FAT, exFAT or NTFS refuse in names.
bool IsRefusedByte(char byte) {
    constexpr std::string_view kRefused = "\"*/:<>?\\|";
    return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F ||
           kRefused.find(byte) != std::string_view::npos;
}

std::string Fit(std::string value) {
    std::replace_if(value.begin(), value.end(), IsRefusedByte, '_');
    return value;
}

/// Names of devices of old, to some systems with anything behind a dot as well.
bool IsDeviceName(std::string_view name) {
    constexpr std::array<std::string_view, 4> kDevices = {"con", "prn", "aux", "nul"};
    constexpr std::array<std::string_view, 2> kNumbered = {"com", "lpt"};
    const std::string stem = platform::FoldNameCase(name.substr(0, name.find('.')));
    const auto isOf = [&](const auto& names, std::string_view text) {
        return std::any_of(names.begin(), names.end(), [&](std::string_view each) {
            return platform::FoldNameCase(each) == text;
        });
    };
    return isOf(kDevices, stem) || (stem.size() == 4 && stem[3] >= '1' && stem[3] <= '9' &&
                                    isOf(kNumbered, std::string_view(stem).substr(0, 3)));
}

/// "{card} {serial} ..."
std::string TokenWords() {
    std::string words;
    for (const Token& each : kTokens) {
        words += fmt::format("{{{}}} ", each.name);
    }
    return words + fmt::format("{{{}}}", kCounter);
}

std::string ValueOf(std::string_view token, const NameFacts& facts, int counter) {
    if (token == kCounter) {
        return fmt::format("{:03}", counter);
    }
    const auto known = std::find_if(kTokens.begin(), kTokens.end(),
                                    [&](const Token& each) { return each.name == token; });
    if (known == kTokens.end()) {
        throw tool::Failure(fmt::format("--name {{{}}}", token), "is no token",
                            "there are " + TokenWords(), kUsage);
    }
    std::string value = Fit(facts.*known->value);
    if (value.empty()) {
        throw tool::Failure(fmt::format("--name {{{}}}", token), "has no value for this card",
                            known->missing, kUsage);
    }
    return value;
}

} // namespace

bool HasCounter(std::string_view pattern) {
    return pattern.find("{counter}") != std::string_view::npos;
}

std::string FillName(const std::string& pattern, const NameFacts& facts, int counter) {
    std::string name;
    for (std::size_t at = 0; at < pattern.size();) {
        const std::size_t open = pattern.find('{', at);
        if (open == std::string::npos) {
            return name + pattern.substr(at);
        }
        const std::size_t close = pattern.find('}', open);
        if (close == std::string::npos) {
            throw tool::Failure("--name " + pattern, "has a token without an end",
                                "a { begins one of " + TokenWords(), kUsage);
        }
        name += pattern.substr(at, open - at);
        name +=
            ValueOf(std::string_view(pattern).substr(open + 1, close - open - 1), facts, counter);
        at = close + 1;
    }
    return name;
}

std::string FaultOfName(const std::string& name) {
    if (!platform::IsEntryName(name)) {
        return "is not the name of one folder";
    }
    if (name.size() > media::kLongestFileName) {
        return "is longer than names of folders can be";
    }
    if (std::any_of(name.begin(), name.end(), IsRefusedByte)) {
        return "holds a character that not every medium takes in names";
    }
    if (name.ends_with('.') || name.ends_with(' ')) {
        return "ends with a dot or a space, which not every system keeps";
    }
    if (IsDeviceName(name)) {
        return "is the name of a device on other systems";
    }
    // Lists of other tools are blind below a folder of their own name.
    if (platform::FoldNameCase(name) == platform::FoldNameCase(mhl::kHistoryFolder) ||
        platform::IsLeftoverName(name)) {
        return "has a meaning of its own";
    }
    if (mhl::IgnoreList::Default().IsIgnoredItself(name, true)) {
        return "is the name of a desktop's litter, which lists leave out";
    }
    return mhl::NameFault(name);
}

bool IsGenericName(std::string_view name) {
    // Systems number what has the same name: "Untitled 1".
    const std::size_t end = name.find_last_not_of("0123456789");
    if (end != std::string_view::npos && name[end] == ' ') {
        name = name.substr(0, end);
    }
    const std::string folded = platform::FoldNameCase(name);
    return name.empty() ||
           std::any_of(kGenericNames.begin(), kGenericNames.end(), [&](std::string_view each) {
               return platform::FoldNameCase(each) == folded;
           });
}

} // namespace nqp2::offload
