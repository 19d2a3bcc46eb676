// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/mhl/comparison.h"
#include "offload/mhl/history.h"
#include "tests/support/temp_folder.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace nqp2::mhl::test {

inline std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline Hashes HashOf(std::string_view bytes, FormatSet formats) {
    Hasher hasher(formats);
    hasher.Add(bytes);
    return hasher.Value();
}

inline std::string ReplacedIn(std::string text, std::string_view from, std::string_view to) {
    const std::size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from << " in " << text;
    return place == std::string::npos ? text : text.replace(place, from.size(), to);
}

/// A folder of files on the disk with a history, as a program would keep it.
class SealedFolder {
public:
    static constexpr std::int64_t kFirstTime = 1795248550; ///< 2026-11-21T08:09:10Z

    explicit SealedFolder(std::string_view scope = "A001") : m_scope(m_temp.MakeFolder(scope)) {}

    [[nodiscard]] const std::string& Scope() const { return m_scope; }
    [[nodiscard]] std::string Path(const std::string& name) const { return m_scope + "/" + name; }
    void Write(const std::string& name, std::string_view bytes) const {
        std::filesystem::create_directories(std::filesystem::path(Path(name)).parent_path());
        std::ofstream(Path(name), std::ios::binary) << bytes;
    }
    void Remove(const std::string& name) const { std::filesystem::remove_all(Path(name)); }
    void Rename(const std::string& from, const std::string& to) const {
        std::filesystem::create_directories(std::filesystem::path(Path(to)).parent_path());
        std::filesystem::rename(Path(from), Path(to));
    }

    [[nodiscard]] History Open() const { return History::Open(platform::Files(), m_scope); }

    /// What is there, hashed in what the history asks for and in `formats`.
    [[nodiscard]] Tree Present(const History& history, FormatSet formats) const {
        Tree tree;
        Walk(history, formats, tree, kScope, "");
        tree.Sort();
        tree.HashFolders(formats | history.Formats());
        return tree;
    }
    [[nodiscard]] Comparison Verify(FormatSet formats = HashFormat::Xxh128) const {
        const History history = Open();
        Tree tree = Present(history, formats);
        return Compare(history, tree);
    }

    [[nodiscard]] ManifestHead Head() const {
        ManifestHead head;
        head.created = kFirstTime + m_generations * 60;
        head.hostName = "set.example";
        head.tool = "nqp2";
        head.toolVersion = "1";
        head.process = Process::InPlace;
        return head;
    }

    /// Verifies and adds a generation.
    platform::IoStatus Seal(FormatSet formats = HashFormat::Xxh128) {
        const History history = Open();
        Tree tree = Present(history, formats);
        Compare(history, tree);
        added.clear();
        ++m_generations;
        return history.AddGeneration(Head(), tree, added);
    }

    /// Without the folder, sorted.
    [[nodiscard]] std::vector<std::string> FilesOfHistory() const {
        std::vector<std::string> names;
        for (const auto& each : std::filesystem::directory_iterator(Path("ascmhl"))) {
            names.push_back(each.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    std::vector<AddedGeneration> added;

private:
    void Walk(const History& history, FormatSet formats, Tree& tree, NodeId parent,
              const std::string& folder) const {
        for (const auto& each : std::filesystem::directory_iterator(Path(folder))) {
            const std::string name = each.path().filename().string();
            const std::string path = folder.empty() ? name : folder + "/" + name;
            if (history.Ignored().IsIgnoredItself(path, each.is_directory())) {
                continue;
            }
            if (each.is_directory()) {
                Walk(history, formats, tree, *tree.AddFolder(parent, name), path);
                continue;
            }
            const std::string bytes = ReadFile(Path(path));
            const NodeId file = *tree.AddFile(parent, name, bytes.size(), kFirstTime);
            tree.SetHashes(file, HashOf(bytes, formats | FormatsToCheck(history, path)));
        }
    }

    nqp2::test::TempFolder m_temp;
    std::string m_scope;
    int m_generations = 0;
};

inline std::vector<std::string> SentencesOf(const History& history, bool faultsOnly = true) {
    std::vector<std::string> sentences;
    for (const Finding& each : history.Found().Kept()) {
        if (each.isFault || !faultsOnly) {
            sentences.push_back(each.Text());
        }
    }
    return sentences;
}

} // namespace nqp2::mhl::test
