// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/arguments.h"

#include "console/console.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace nqp2::catalogue {
namespace {

/// Each takes its value from a text; false when that is none.
bool TakeValue(std::string& member, std::string_view value) {
    member = value;
    return true;
}
bool TakeValue(std::vector<std::string>& member, std::string_view value) {
    member.emplace_back(value);
    return !value.empty();
}
bool TakeValue(std::int64_t& member, std::string_view value) {
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), member);
    return error == std::errc() && end == value.data() + value.size() && member > 0;
}
bool TakeValue(bool& member, std::string_view value) {
    member = value == "yes";
    return member;
}

template <auto Member>
bool TakeInto(Arguments& arguments, std::string_view value) {
    return TakeValue(arguments.*Member, value);
}
template <auto Member>
bool TakeIntoSearch(Arguments& arguments, std::string_view value) {
    return TakeValue(arguments.search.*Member, value);
}

constexpr struct {
    std::string_view key;
    bool (*take)(Arguments&, std::string_view);
} kKeys[] = {{"camera", TakeIntoSearch<&SearchOptions::camera>},
             {"card", TakeInto<&Arguments::cards>},
             {"codec", TakeIntoSearch<&SearchOptions::codec>},
             {"csv", TakeInto<&Arguments::csv>},
             {"db", TakeInto<&Arguments::database>},
             {"from", TakeIntoSearch<&SearchOptions::from>},
             {"json", TakeInto<&Arguments::json>},
             {"jsonl", TakeInto<&Arguments::lines>},
             {"label", TakeInto<&Arguments::label>},
             {"limit", TakeIntoSearch<&SearchOptions::limit>},
             {"page", TakeInto<&Arguments::page>},
             {"rate", TakeIntoSearch<&SearchOptions::rate>},
             {"recursive", TakeInto<&Arguments::isRecursive>},
             {"sort", TakeIntoSearch<&SearchOptions::sort>},
             {"state", TakeIntoSearch<&SearchOptions::state>},
             {"to", TakeIntoSearch<&SearchOptions::to>},
             {"words", TakeIntoSearch<&SearchOptions::words>}};

[[noreturn]] void ThrowUsage(std::string_view key) {
    throw tool::Failure(key, "is not understood", "nqp2 runs this program", tool::kUsage);
}

/// Of what is not understood the key alone is told: a value may be anything.
void TakeWord(Arguments& arguments, std::string_view word) {
    const std::size_t sign = std::min(word.find('='), word.size());
    const std::string_view key = word.substr(0, sign);
    const auto* const row = std::find_if(std::begin(kKeys), std::end(kKeys),
                                         [&](const auto& each) { return each.key == key; });
    if (row == std::end(kKeys) || sign == word.size() ||
        !row->take(arguments, word.substr(sign + 1))) {
        ThrowUsage(key);
    }
}

} // namespace

Arguments ReadArguments(int count, const char* const* words) {
    Arguments arguments;
    if (count < 2) {
        ThrowUsage("nothing");
    }
    arguments.operation = words[1];
    for (int i = 2; i < count; ++i) {
        TakeWord(arguments, words[i]);
    }
    return arguments;
}

} // namespace nqp2::catalogue
