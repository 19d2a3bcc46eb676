// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/flat_fields.h"

#include "nqp2/console.h"
#include "nqp2/csv_row.h"
#include "nqp2/table.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace nqp2::tool {
namespace {

/// How deep lists are taken apart.
enum class Flatten {
    Everything,   ///< "Memos.0.Text"; as many fields as there are elements
    ListsOfTexts, ///< any other list is one field: every record gives the same names
};

/// Hands out the leaves of a record with their dotted names: "Proxy.ProxyExt", "AudioPath.0". That
/// of a list that is one field has no text.
class LeafSink final : public ValueSink {
public:
    using Take = std::function<void(const std::string& name, const std::string& text)>;
    LeafSink(Flatten depth, Take take) : m_depth(depth), m_take(std::move(take)) {}

    void Put(std::int64_t number) override { PutLeaf(fmt::format("{}", number)); }
    void Put(std::uint64_t number) override { PutLeaf(fmt::format("{}", number)); }
    void Put(double number) override { PutLeaf(fmt::format("{}", number)); }
    void Put(bool truth) override { PutLeaf(fmt::format("{}", truth)); }
    void Put(std::string_view text) override { PutLeaf(std::string(text)); }
    void Put(const CString& text) override { PutLeaf(BytesFromText(text)); }
    void BeginRecord() override { Begin(false); }
    void Name(std::string_view name) override { Step(name); }
    void EndRecord() override { m_levels.pop_back(); }
    void BeginList(ListOf kind) override {
        Begin(true);
        if (m_depth == Flatten::ListsOfTexts && kind != ListOf::Texts && ++m_kept == 1) {
            m_take(m_name, {});
        }
        m_levels.back().isKept = m_kept > 0;
    }
    void EndList() override {
        m_kept -= m_levels.back().isKept ? 1 : 0;
        m_levels.pop_back();
    }

private:
    /// A record or list around what comes.
    struct Level {
        std::size_t nameLength = 0;
        bool isList = false;
        bool isKept = false;
        int index = 0;
    };
    void Begin(bool isList) {
        StepToElement();
        m_levels.push_back({m_name.size(), isList});
    }
    void Step(std::string_view step) {
        m_name.resize(m_levels.back().nameLength);
        m_name += m_name.empty() ? "" : ".";
        m_name += step;
    }
    void StepToElement() {
        if (!m_levels.empty() && m_levels.back().isList) {
            Step(fmt::format("{}", m_levels.back().index++));
        }
    }
    void PutLeaf(const std::string& text) {
        StepToElement();
        if (m_kept == 0) {
            m_take(m_name, text);
        }
    }

    Flatten m_depth;
    Take m_take;
    std::string m_name; ///< of what comes
    std::vector<Level> m_levels;
    int m_kept = 0; ///< lists around what comes that are one field
};

} // namespace

void PrintFields(Console& console, const Value& record) {
    PrintPairs(console, [&](const TakeRow& take) {
        LeafSink leaves(Flatten::Everything, [&](const std::string& name, const std::string& text) {
            take({name, text});
        });
        Put(leaves, record);
    });
}

void PrintCsv(Console& console, const Value& fresh, const Sequence& rows) {
    OutputText out(&console);
    const char* separator = "";
    LeafSink names(Flatten::ListsOfTexts, [&](const std::string& name, const std::string&) {
        out.Put(separator);
        PutCell(out, name);
        separator = ",";
    });
    Put(names, fresh);
    out.Put("\r\n");
    CsvRow row(out);
    for (std::size_t i = 0; i < rows.count; ++i) {
        rows.put(row, i);
    }
    out.Flush();
}

} // namespace nqp2::tool
