// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/json_parts.h"

#include "console/utf8_text.h"

#include <algorithm>
#include <iterator>
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

void Append(Record& record, Record members) {
    std::move(members.begin(), members.end(), std::back_inserter(record));
}

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

void PutPath(Record& record, std::string_view name, std::string_view bytesName,
             const std::string& path) {
    record.push_back({name, path});
    if (std::string bytes = tool::BytesUnlessUtf8(path); !bytes.empty()) {
        record.push_back({bytesName, std::move(bytes)});
    }
}

tool::Sequence OddList(const OddEntries& entries) {
    return Each(entries.Kept(), [](const OddEntry& each) {
        Record record;
        PutPath(record, "path", "pathBytes", each.path);
        record.push_back({"reason", each.why});
        return record;
    });
}

} // namespace nqp2::offload
