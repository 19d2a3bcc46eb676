// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tools/nqp2/json_output.h"

#include "tools/nqp2/console.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <string_view>

namespace nqp2::tool {
namespace {

using Json = nlohmann::ordered_json;

Json JsonFrom(const Value& value);

Json JsonFromData(const List& list) {
    Json json = Json::array();
    for (const Value& element : list) {
        json.push_back(JsonFrom(element));
    }
    return json;
}

Json JsonFromData(const Record& record) {
    Json json = Json::object();
    for (const NamedValue& member : record) {
        json[member.name] = JsonFrom(member.value);
    }
    return json;
}

Json JsonFromData(const Sequence& sequence) {
    Json json = Json::array();
    for (std::size_t i = 0; i < sequence.count; ++i) {
        json.push_back(JsonFrom(sequence.at(i)));
    }
    return json;
}

template <class Leaf>
Json JsonFromData(const Leaf& leaf) {
    return Json(leaf);
}

Json JsonFrom(const Value& value) {
    return std::visit([](const auto& data) { return JsonFromData(data); }, value.data);
}

/// JSON allows DEL and the C1 controls in a string, terminals obey them: they are escaped too.
std::string WithTerminalControlsEscaped(const std::string& json) {
    std::string out;
    out.reserve(json.size());
    for (std::size_t i = 0; i < json.size(); ++i) {
        const auto byte = static_cast<unsigned char>(json[i]);
        const auto next = static_cast<unsigned char>(i + 1 < json.size() ? json[i + 1] : '\0');
        if (byte == 0x7F) {
            out += "\\u007f";
        } else if (byte == 0xC2 && next >= 0x80 && next <= 0x9F) {
            out += fmt::format("\\u{:04x}", next);
            ++i;
        } else {
            out += json[i];
        }
    }
    return out;
}

std::string Dump(const Json& json) {
    return WithTerminalControlsEscaped(json.dump(-1, ' ', false, Json::error_handler_t::replace));
}

/// Prints elements one to a line, made one at a time.
void PrintLines(Console& console, const Sequence& sequence) {
    console.Write("[");
    for (std::size_t i = 0; i < sequence.count; ++i) {
        console.Write(i == 0 ? "\n    " : ",\n    ");
        console.Write(JsonText(sequence.at(i)));
    }
    console.Write(sequence.count == 0 ? "]" : "\n  ]");
}

void PrintMember(Console& console, const Value& value) {
    if (const auto* sequence = std::get_if<Sequence>(&value.data)) {
        PrintLines(console, *sequence);
        return;
    }
    console.Write(JsonText(value));
}

} // namespace

std::string JsonText(const Value& value) {
    return Dump(JsonFrom(value));
}

void PrintJson(Console& console, const Record& document) {
    const char* separator = "{\n  ";
    for (const NamedValue& member : document) {
        console.Write(separator);
        console.Write(JsonText(member.name));
        console.Write(": ");
        PrintMember(console, member.value);
        separator = ",\n  ";
    }
    console.Write(document.empty() ? "{}\n" : "\n}\n");
}

} // namespace nqp2::tool
