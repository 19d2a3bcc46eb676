// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/hash_lists.h"

#include "offload/mhl/chain.h"
#include "offload/mhl/manifest.h"
#include "platform/file_system.h"

#include <cstdint>
#include <memory>

namespace nqp2::catalogue {
namespace {

constexpr std::uint64_t kMostChainBytes = std::uint64_t{16} * 1024 * 1024;
constexpr std::size_t kPiece = std::size_t{256} * 1024;
constexpr int kFoldersUp = 2;

/// The head alone is wanted.
class NoRecords final : public mhl::ManifestHandler {
public:
    void OnFile(const mhl::FileRecord& /*record*/) override {}
    void OnFolder(const mhl::FolderRecord& /*record*/) override {}
    void OnReference(const mhl::Reference& /*reference*/) override {}
    void OnFinding(bool /*isFault*/, int /*line*/, std::string /*sentence*/) override {}
};

void ReadHead(const std::string& path, GenerationRecord& generation) {
    std::unique_ptr<platform::FileReader> file;
    if (!platform::Files().Open(path, file)) {
        return;
    }
    NoRecords handler;
    mhl::ManifestReader reader(handler);
    std::string piece(kPiece, '\0');
    std::size_t count = 1;
    while (count > 0 && file->Read(piece.data(), piece.size(), count) &&
           reader.Add(std::string_view(piece.data(), count))) {
    }
    if (!reader.Finish()) {
        return;
    }
    generation.created = reader.Head().created;
    if (!reader.Head().root) {
        return;
    }
    const mhl::FolderHashes& root = *reader.Head().root;
    for (const mhl::HashFormatFacts& each : mhl::kHashFormats) {
        if (root.content.Has(each.format)) {
            generation.rootFormat = each.name;
            generation.rootContent = root.content.Text(each.format);
            generation.rootStructure = root.structure.Text(each.format);
        }
    }
}

std::vector<GenerationRecord> ReadChainIn(const std::string& folder) {
    std::string bytes;
    const std::string chain = platform::PathIn(folder, std::string(mhl::kChainFile));
    std::vector<GenerationRecord> generations;
    if (!platform::Files().Read(chain, kMostChainBytes, bytes)) {
        return generations;
    }
    for (const mhl::ChainEntry& entry :
         mhl::ReadChain(bytes, [](int, const std::string&) {}).entries) {
        GenerationRecord generation;
        generation.number = static_cast<std::int64_t>(entry.number);
        generation.manifest = entry.name;
        generation.c4 = entry.c4.Text(mhl::HashFormat::C4);
        ReadHead(platform::PathIn(folder, entry.name), generation);
        generations.push_back(std::move(generation));
    }
    return generations;
}

} // namespace

std::vector<GenerationRecord> GenerationsOf(const std::string& root) {
    std::string folder = root;
    for (int up = 0; up <= kFoldersUp && !folder.empty(); ++up) {
        std::vector<GenerationRecord> found =
            ReadChainIn(platform::PathIn(folder, std::string(mhl::kHistoryFolder)));
        if (!found.empty()) {
            return found;
        }
        const std::string above = platform::FolderPart(folder);
        folder = above.size() > 1 ? above.substr(0, above.size() - 1) : "";
    }
    return {};
}

} // namespace nqp2::catalogue
