// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/arguments.h"

#include "console/console.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>
#include <string_view>

namespace nqp2::offload {
namespace {

constexpr struct {
    std::string_view name;
    Operation operation;
} kOperations[] = {
    {"offload", Operation::Offload}, {"seal", Operation::Seal}, {"verify", Operation::Verify}};

/// Each takes its value from a text; false when that is none.
bool Take(std::string& member, std::string_view value) {
    member = value;
    return !member.empty();
}
bool Take(std::vector<std::string>& member, std::string_view value) {
    member.emplace_back(value);
    return !value.empty();
}
bool Take(std::uint32_t& member, std::string_view value) {
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), member);
    return error == std::errc() && end == value.data() + value.size();
}
bool Take(bool& member, std::string_view value) {
    member = value == "yes";
    return member;
}

template <auto Member>
bool TakeInto(Arguments& arguments, std::string_view value) {
    return Take(arguments.*Member, value);
}

constexpr struct {
    std::string_view key;
    bool (*take)(Arguments&, std::string_view);
} kKeys[] = {{"append", TakeInto<&Arguments::append>},
             {"card", TakeInto<&Arguments::card>},
             {"copies", TakeInto<&Arguments::copies>},
             {"dry-run", TakeInto<&Arguments::dryRun>},
             {"folder", TakeInto<&Arguments::folder>},
             {"hash", TakeInto<&Arguments::hashes>},
             {"json", TakeInto<&Arguments::json>},
             {"log", TakeInto<&Arguments::log>},
             {"name", TakeInto<&Arguments::name>},
             {"no-verify-source", TakeInto<&Arguments::noVerifySource>},
             {"progress", TakeInto<&Arguments::progress>},
             {"sums", TakeInto<&Arguments::sums>},
             {"to", TakeInto<&Arguments::targets>}};

[[noreturn]] void ThrowUsage(std::string_view word) {
    throw tool::Failure(word, "is not understood", "nqp2 runs this program", tool::kUsage);
}

Operation OperationNamed(std::string_view name) {
    if (name.empty()) {
        throw tool::Failure("nqp2-offload", "has nothing to do", "nqp2 runs this program",
                            tool::kUsage);
    }
    const auto* const row = std::find_if(std::begin(kOperations), std::end(kOperations),
                                         [name](const auto& each) { return each.name == name; });
    if (row == std::end(kOperations)) {
        ThrowUsage(name);
    }
    return row->operation;
}

void TakeWord(Arguments& arguments, std::string_view word) {
    const std::size_t sign = std::min(word.find('='), word.size());
    const auto* const row = std::find_if(std::begin(kKeys), std::end(kKeys), [&](const auto& each) {
        return each.key == word.substr(0, sign);
    });
    if (row == std::end(kKeys) || sign == word.size() ||
        !row->take(arguments, word.substr(sign + 1))) {
        ThrowUsage(word);
    }
}

bool IsComplete(const Arguments& arguments) {
    return arguments.operation == Operation::Offload
               ? !arguments.card.empty() && !arguments.targets.empty()
               : !arguments.folder.empty();
}

} // namespace

Arguments ReadArguments(int count, const char* const* arguments) {
    Arguments read;
    read.operation = OperationNamed(count > 1 ? arguments[1] : "");
    for (int i = 2; i < count; ++i) {
        TakeWord(read, arguments[i]);
    }
    if (!IsComplete(read)) {
        ThrowUsage(arguments[1]);
    }
    return read;
}

bool AskForObjects(int count, const char* const* arguments) {
    return std::any_of(arguments, arguments + count,
                       [](std::string_view word) { return word == "progress=json"; });
}

mhl::FormatSet FormatsNamed(const std::vector<std::string>& names) {
    mhl::FormatSet formats;
    for (const std::string& name : names) {
        const std::optional<mhl::HashFormat> format = mhl::HashFormatNamed(name);
        if (!format) {
            throw tool::Failure("--hash " + name, "is no format of a hash", "", tool::kUsage);
        }
        formats |= *format;
    }
    return formats;
}

} // namespace nqp2::offload
