// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/value.h"
#include "offload/folder_index.h"
#include "offload/mhl/tree.h"

/// What the documents of several commands have in common.
namespace nqp2::offload {

/// A list of what is made of each element while it is written. The items outlive it.
template <class Items, class RecordOfItem>
tool::Sequence Each(const Items& items, RecordOfItem recordOf) {
    return {items.size(), [&items, recordOf](tool::ValueSink& sink, std::size_t index) {
                tool::Put(sink, tool::Value(recordOf(items[index])));
            }};
}

/// Puts members behind those that there are.
void Append(tool::Record& record, tool::Record members);
/// {"format", "text"} of each hash.
tool::List HashList(const mhl::Hashes& hashes);
/// {"format", "content", "structure"} of each pair.
tool::List FolderHashList(const mhl::FolderHashes& hashes);
/// Puts a path, under a second name also its bytes where these are no UTF-8.
void PutPath(tool::Record& record, std::string_view name, std::string_view bytesName,
             const std::string& path);
/// {"path", "reason"} of each entry that was kept.
tool::Sequence OddList(const OddEntries& entries);

} // namespace nqp2::offload
