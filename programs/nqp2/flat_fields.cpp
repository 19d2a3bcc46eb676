// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/flat_fields.h"

#include "nqp2/console.h"
#include "nqp2/display_text.h"
#include "nqp2/table.h"

#include <fmt/core.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace nqp2::tool {
namespace {

/// One leaf of a record under its dotted name: "Proxy.ProxyExt", "AudioPath.0".
struct FlatField {
    std::string name;
    std::string text;
};

/// How deep lists of records are taken apart.
enum class Flatten {
    Everything,        ///< "Memos.0.Text"; as many fields as there are elements
    KeepListsOfRecords ///< such a list is one field in JSON: every record gives the same names
};

/// Collects the leaves of a value under their names.
class Flattener {
public:
    explicit Flattener(Flatten depth) : m_depth(depth) {}

    void Add(const std::string& name, const Value& value) {
        std::visit([&](const auto& data) { AddData(name, data); }, value.data);
    }
    std::vector<FlatField> Take() { return std::move(m_fields); }

private:
    void AddData(const std::string& name, const std::string& text) {
        m_fields.push_back({name, text});
    }
    template <class Number>
    void AddData(const std::string& name, Number number) {
        m_fields.push_back({name, fmt::format("{}", number)});
    }
    void AddData(const std::string& name, const Record& record) {
        for (const NamedValue& member : record) {
            Add(name + '.' + member.name, member.value);
        }
    }
    void AddData(const std::string& name, const List& list) {
        if (m_depth == Flatten::KeepListsOfRecords && !HoldsTexts(list)) {
            m_fields.push_back({name, JsonText(list)});
            return;
        }
        for (std::size_t i = 0; i < list.size(); ++i) {
            Add(fmt::format("{}.{}", name, i), list[i]);
        }
    }
    void AddData(const std::string& name, const Sequence& sequence) {
        if (m_depth == Flatten::KeepListsOfRecords) {
            m_fields.push_back({name, JsonText(sequence)});
            return;
        }
        for (std::size_t i = 0; i < sequence.count; ++i) {
            Add(fmt::format("{}.{}", name, i), sequence.at(i));
        }
    }
    static bool HoldsTexts(const List& list) {
        return !list.empty() && std::holds_alternative<std::string>(list.front().data);
    }

    Flatten m_depth;
    std::vector<FlatField> m_fields;
};

std::vector<FlatField> FlatFields(const Record& record, Flatten depth) {
    Flattener flattener(depth);
    for (const NamedValue& member : record) {
        flattener.Add(member.name, member.value);
    }
    return flattener.Take();
}

/// A list of many events is one long cell: no copy is made only to double its quotes.
void PrintCell(Console& console, const std::string& text) {
    const std::string shown = Printable(text, LineBreaks::Keep);
    if (shown.find_first_of(",\"\n") == std::string::npos) {
        console.Write(shown);
        return;
    }
    console.Write("\"");
    std::string_view left = shown;
    for (std::size_t quote = left.find('"'); quote != std::string_view::npos;
         quote = left.find('"')) {
        console.Write(left.substr(0, quote + 1));
        console.Write("\"");
        left.remove_prefix(quote + 1);
    }
    console.Write(left);
    console.Write("\"");
}

void PrintRow(Console& console, const std::vector<FlatField>& fields,
              std::string FlatField::*member) {
    const char* separator = "";
    for (const FlatField& field : fields) {
        console.Write(separator);
        PrintCell(console, field.*member);
        separator = ",";
    }
    console.Write("\r\n");
}

} // namespace

void PrintFields(Console& console, const Record& record) {
    Table table({{"", Align::Left, 0}, {"", Align::Left, 8}});
    for (const FlatField& field : FlatFields(record, Flatten::Everything)) {
        table.AddRow({field.name, field.text});
    }
    table.Print(console);
}

void PrintCsv(Console& console, const Record& names, const Sequence& rows) {
    PrintRow(console, FlatFields(names, Flatten::KeepListsOfRecords), &FlatField::name);
    for (std::size_t i = 0; i < rows.count; ++i) {
        const Value row = rows.at(i);
        PrintRow(console, FlatFields(std::get<Record>(row.data), Flatten::KeepListsOfRecords),
                 &FlatField::text);
    }
}

} // namespace nqp2::tool
