// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Documents as the generations of a history whose chain is right.

#include "fuzz/fuzz_target.h"
#include "fuzz/memory_files.h"
#include "offload/mhl/history.h"
#include "offload/mhl/name_rules.h"

namespace nqp2::fuzz {
namespace {

using namespace nqp2::mhl;

constexpr std::size_t kMostGenerations = 4;
const std::string kScopePath = "/nqp2-fuzz";
const std::string kHistoryPath = kScopePath + "/ascmhl/";

Hashes C4Of(std::string_view bytes) {
    Hasher hasher(HashFormat::C4);
    hasher.Add(bytes);
    return hasher.Value();
}

MemoryFiles HistoryOf(Input input) {
    MemoryFiles files;
    std::vector<ChainEntry> chain;
    ForEachDocument(input, [&](std::string_view document) {
        if (chain.size() == kMostGenerations) {
            return; // more only make each try slow
        }
        const std::string name = ManifestName(chain.size() + 1, "fuzz", 0);
        files.files[kHistoryPath + name] = document;
        chain.push_back({chain.size() + 1, name, C4Of(document), 0});
    });
    files.files[kHistoryPath + std::string(kChainFile)] = ChainText(chain);
    return files;
}

/// What is told of one document, whatever pieces it comes in.
class Notes final : public ManifestHandler {
public:
    void OnFile(const FileRecord& record) override {
        Require(PathFault(record.path).empty(), "the path of a file is sound");
        Note(record.path, record.line);
    }
    void OnFolder(const FolderRecord& record) override {
        Require(PathFault(record.path).empty(), "the path of a folder is sound");
        Note(record.path, record.line);
    }
    void OnReference(const Reference& reference) override {
        Require(PathFault(reference.path).empty(), "the path of a reference is sound");
        Note(reference.path, reference.line);
    }
    // The parser's own words may depend on how far it has looked.
    void OnFinding(bool /*isFault*/, int /*line*/, std::string /*sentence*/) override {
        ++findings;
    }
    bool Read(std::string_view document, std::size_t piece) {
        ManifestReader reader(*this);
        for (; !document.empty(); document.remove_prefix(std::min(piece, document.size()))) {
            if (!reader.Add(document.substr(0, piece))) {
                break;
            }
        }
        return reader.Finish();
    }

    std::string text;
    std::size_t findings = 0;

private:
    void Note(const std::string& path, int line) {
        text.append(path).append(1, ':').append(std::to_string(line)).append(1, '\n');
    }
};

void CheckPieces(std::string_view document) {
    constexpr std::size_t kSmall = 5;
    Notes whole;
    Notes pieces;
    const bool isWhole = whole.Read(document, document.size());
    Require(isWhole == pieces.Read(document, kSmall), "pieces make no difference");
    Require(isWhole || whole.findings > 0, "a fault is told");
    Require(!isWhole || whole.text == pieces.text, "pieces make no difference to records");
}

} // namespace

void TestInput(Input input) {
    MemoryFiles files = HistoryOf(input);
    const History history = History::Open(files, kScopePath);
    const Tree& expected = history.Expected();
    std::size_t found = 0;
    for (NodeId node = expected.FirstInPostOrder(kScope); node != kNoNode;
         node = expected.NextInPostOrder(node, kScope)) {
        Require(expected.Find(expected.PathOf(node)) == node, "what is expected is found");
        found += expected.IsFolder(node) ? 0U : 1U;
    }
    Require(found == expected.FileCount(), "every file is in its place");
    CheckPieces(AsText(input).substr(0, AsText(input).find('\0')));
}

} // namespace nqp2::fuzz
