// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/json_parts.h"

#include <string>
#include <utility>

namespace nqp2::offload {
namespace {

using tool::List;
using tool::Record;

Record WithHash(std::string_view format, std::string_view name, std::string text) {
    return {{"format", std::string(format)}, {name, std::move(text)}};
}

} // namespace

List HashList(const mhl::Hashes& hashes) {
    List list;
    for (const mhl::HashFormatFacts& each : mhl::kHashFormats) {
        if (hashes.Has(each.format)) {
            list.emplace_back(WithHash(each.name, "text", hashes.Text(each.format)));
        }
    }
    return list;
}

List FolderHashList(const mhl::FolderHashes& hashes) {
    List list;
    for (const mhl::HashFormatFacts& each : mhl::kHashFormats) {
        if (hashes.content.Has(each.format)) {
            Record record = WithHash(each.name, "content", hashes.content.Text(each.format));
            record.push_back({"structure", hashes.structure.Text(each.format)});
            list.emplace_back(std::move(record));
        }
    }
    return list;
}

tool::Sequence OddList(const OddEntries& entries) {
    return Each(entries.Kept(), [](const OddEntry& each) {
        return Record{{"path", each.path}, {"reason", each.why}};
    });
}

} // namespace nqp2::offload
