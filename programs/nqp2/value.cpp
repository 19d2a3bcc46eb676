// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/value.h"

#include "nqp2/console.h"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <string_view>
#include <utility>

namespace nqp2::tool {
namespace {

using Json = nlohmann::ordered_json;

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

/// Texts that JSON shows as they are: most are codecs, names, digits and paths.
bool IsPlain(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char ch) { return ch >= ' ' && ch < 0x7F && ch != '"' && ch != '\\'; });
}

/// Writes values as JSON, piece by piece: however many elements a list has, no more is held than a
/// block of text.
class Writer {
public:
    /// Without a console all that is written stays in Text().
    explicit Writer(Console* console) : m_console(console) {}

    void Put(std::string_view text) {
        constexpr std::size_t kBlock = std::size_t{32} * 1024;
        m_text += text;
        if (m_console != nullptr && m_text.size() >= kBlock) {
            Flush();
        }
    }
    void Flush() {
        m_console->Write(m_text);
        m_text.clear();
    }
    std::string& Text() { return m_text; }

    void PutValue(const Value& value) {
        std::visit([this](const auto& data) { PutData(data); }, value.data);
    }
    void PutText(std::string_view text) {
        if (IsPlain(text)) {
            Put("\"");
            Put(text);
            Put("\"");
        } else {
            Put(WithTerminalControlsEscaped(
                Json(text).dump(-1, ' ', false, Json::error_handler_t::replace)));
        }
    }
    /// The elements of a sequence, made one at a time, with what separates them.
    void PutElements(const Sequence& sequence, std::string_view first, std::string_view separator) {
        for (std::size_t i = 0; i < sequence.count; ++i) {
            Put(i == 0 ? first : separator);
            PutValue(sequence.at(i));
        }
    }

private:
    void PutData(const std::string& text) { PutText(text); }
    void PutData(double number) { Put(Json(number).dump()); }
    template <std::integral Number>
    void PutData(Number number) {
        Put(fmt::format("{}", number));
    }
    void PutData(const List& list) {
        PutData(Sequence{list.size(), [&list](std::size_t index) { return list[index]; }});
    }
    void PutData(const Record& record) {
        const char* separator = "";
        Put("{");
        for (const NamedValue& member : record) {
            Put(separator);
            PutText(member.name);
            Put(":");
            PutValue(member.value);
            separator = ",";
        }
        Put("}");
    }
    void PutData(const Sequence& sequence) {
        Put("[");
        PutElements(sequence, "", ",");
        Put("]");
    }

    Console* m_console;
    std::string m_text;
};

/// Each element of a member that is a sequence has a line of its own.
void PutMember(Writer& out, const Value& value) {
    const auto* const sequence = std::get_if<Sequence>(&value.data);
    if (sequence == nullptr) {
        out.PutValue(value);
        return;
    }
    out.Put("[");
    out.PutElements(*sequence, "\n    ", ",\n    ");
    out.Put(sequence->count == 0 ? "]" : "\n  ]");
}

} // namespace

std::string JsonText(const Value& value) {
    Writer out(nullptr);
    out.PutValue(value);
    return std::move(out.Text());
}

void PrintJson(Console& console, const Record& document) {
    Writer out(&console);
    const char* separator = "{\n  ";
    for (const NamedValue& member : document) {
        out.Put(separator);
        out.PutText(member.name);
        out.Put(": ");
        PutMember(out, member.value);
        separator = ",\n  ";
    }
    out.Put(document.empty() ? "{}\n" : "\n}\n");
    out.Flush();
}

} // namespace nqp2::tool
