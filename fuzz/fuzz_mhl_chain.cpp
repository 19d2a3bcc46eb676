// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// A chain of any bytes, beside a manifest that it may name.

#include "fuzz/fuzz_target.h"
#include "fuzz/memory_files.h"
#include "offload/mhl/history.h"
#include "platform/folder.h"

namespace nqp2::fuzz {
namespace {

using namespace nqp2::mhl;

const std::string kHistoryPath = "/nqp2-fuzz/ascmhl/";

} // namespace

void TestInput(Input input) {
    std::size_t faults = 0;
    const ChainFault count = [&](int /*line*/, const std::string& /*sentence*/) { ++faults; };
    const Chain chain = ReadChain(AsText(input), count);
    Require(chain.isWhole || faults > 0, "a fault is told");
    for (const ChainEntry& each : chain.entries) {
        Require(platform::IsEntryName(each.name), "a manifest lies beside its chain");
    }
    if (faults == 0) {
        const Chain again = ReadChain(ChainText(chain.entries), count);
        Require(again.isWhole && faults == 0 && again.entries.size() == chain.entries.size(),
                "a sound chain is written so that it is read");
        for (std::size_t i = 0; i < again.entries.size(); ++i) {
            const ChainEntry& entry = again.entries[i];
            Require(entry.number == i + 1 && entry.name == chain.entries[i].name &&
                        entry.c4 == chain.entries[i].c4,
                    "with the same entries");
        }
    }
    MemoryFiles files;
    files.files[kHistoryPath + "0001_A_2026-01-01_000000Z.mhl"] = "<hashlist/>";
    files.files[kHistoryPath + std::string(kChainFile)] = AsText(input);
    const History history = History::Open(files, "/nqp2-fuzz");
    Require(history.HasChain() && history.Found().Faults() > 0, "that manifest is none");
}

} // namespace nqp2::fuzz
