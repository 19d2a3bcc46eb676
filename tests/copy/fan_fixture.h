// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/failure.h"
#include "copy/fan.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/files_below.h"
#include "tests/support/temp_folder.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace nqp2::copy {

/// Writes down what it is told.
class NotedReport final : public FanReport {
public:
    std::function<bool()> goesOn = [] { return true; };
    std::map<std::string, Digest::Bytes> read;
    std::map<std::string, std::string> unread;
    std::map<std::size_t, std::map<std::string, Arrival>> arrived;
    std::map<std::size_t, std::map<std::string, std::string>> aside;
    std::map<std::size_t, std::map<std::string, std::string>> failed;
    std::map<std::size_t, std::string> ended;

    bool GoesOn() override { return goesOn(); }
    void HasRead(const FanItem& file, const Digest::Bytes& digest) override {
        EXPECT_TRUE(read.emplace(file.path, digest).second) << file.path;
    }
    void CannotRead(const FanItem& file, const std::string& sentence) override {
        EXPECT_TRUE(unread.emplace(file.path, sentence).second);
    }
    void HasArrived(std::size_t target, const FanItem& file, Arrival how) override {
        EXPECT_TRUE(read.contains(file.path)) << file.path;
        EXPECT_TRUE(arrived[target].emplace(file.path, how).second) << file.path;
    }
    void HasSetAside(std::size_t target, const FanItem& file, const std::string& name) override {
        aside[target][file.path] = name;
    }
    void HasFailed(std::size_t target, const FanItem& item, const std::string& sentence) override {
        failed[target][item.path] = sentence;
    }
    void HasEnded(std::size_t target, const std::string& sentence) override {
        EXPECT_TRUE(ended.emplace(target, sentence).second);
    }
};

/// Keeps what it sees.
class KeepingTaker final : public BlockTaker {
public:
    std::map<std::string, std::string> files;

    void Begin(const FanItem&) override { m_bytes.clear(); }
    void Take(std::string_view bytes) override { m_bytes += bytes; }
    void End(const FanItem& file, bool isWhole) override {
        if (isWhole) {
            files[file.path] = m_bytes;
        }
    }

private:
    std::string m_bytes;
};

/// Files are small or large at sizes that a test can have many of.
inline FanSettings SmallSettings() {
    return {.block = 8192,
            .mostInFlight = 32768,
            .smallFile = 4096,
            .batchFiles = 5,
            .batchBytes = 20'000};
}

inline std::string SomeBytes(std::size_t size, unsigned seed) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        seed = seed * 1664525U + 1013904223U;
        bytes[i] = static_cast<char>(seed >> 24U);
    }
    return bytes;
}

inline platform::FileInfo InfoOf(const std::string& path) {
    platform::FileInfo info;
    EXPECT_TRUE(platform::DiskFiles().Stat(path, info)) << path;
    return info;
}

/// A source and its targets.
class FanTest : public testing::Test {
protected:
    using Tree = std::map<std::string, std::string>;

    /// What a caller does: all files, the folders, the times of folders. The failure that ends it.
    std::string Run(NotedReport& report, const FanSettings& settings = SmallSettings(),
                    std::size_t targets = 2, const std::vector<BlockTaker*>& takers = {}) {
        std::unique_ptr<platform::Folder> source;
        EXPECT_TRUE(platform::Files().OpenFolder(m_source.Path(), source));
        std::vector<FanRoot> roots;
        for (std::size_t i = 0; i < targets; ++i) {
            roots.emplace_back(Root(i));
        }
        try {
            Fan fan(*source, roots, takers, report, settings);
            for (const FanItem& file : m_files) {
                fan.Copy(file);
            }
            for (const FanItem& folder : m_folders) {
                fan.MakeFolder(folder);
            }
            fan.Finish();
            fan.KeepTimes(m_folders);
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "";
    }
    [[nodiscard]] std::string Root(std::size_t target) const {
        return m_targets.Path("t" + std::to_string(target) + "/CARD");
    }
    [[nodiscard]] Tree Arrived(std::size_t target) const {
        return std::filesystem::exists(Root(target)) ? test::FilesBelow(Root(target)) : Tree();
    }
    void Clear() {
        for (const auto& entry : std::filesystem::directory_iterator(m_targets.Path())) {
            std::filesystem::remove_all(entry.path());
        }
    }

    /// Sizes around each limit of SmallSettings.
    void MakeSource(const std::vector<std::size_t>& sizes = {0, 1, 4095, 4096, 4097, 8191, 8192,
                                                             8193, 50'000}) {
        unsigned seed = 1;
        for (const std::size_t size : sizes) {
            m_source.Write("CONTENTS/VIDEO/" + std::to_string(size), SomeBytes(size, ++seed));
            m_source.Write("PRIVATE/" + std::to_string(size), SomeBytes(size, ++seed));
        }
        m_source.Write("LASTCLIP.TXT", "0001AB");
        m_source.Write("HOLES", SomeBytes(100, 1) + std::string(40'000, '\0') + "end" +
                                    std::string(20'000, '\0'));
        m_source.MakeFolder("EMPTY/BELOW");
        List();
    }
    void List() {
        m_files.clear();
        m_folders.clear();
        const auto ago = std::chrono::hours(9999) + std::chrono::nanoseconds(123'456'700);
        const auto shot = std::filesystem::file_time_type::clock::now() - ago;
        std::set<std::string> paths;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_source.Path())) {
            paths.insert(entry.path());
        }
        for (const std::string& path : paths) {
            std::filesystem::last_write_time(path, shot + std::chrono::seconds(m_files.size()));
        }
        for (const std::string& path : paths) {
            FanItem item{path.substr(m_source.Path().size() + 1), InfoOf(path), 0};
            const bool isFile = item.info.kind == platform::EntryKind::File;
            (isFile ? m_files : m_folders).push_back(std::move(item));
        }
        m_content = test::FilesBelow(m_source.Path());
    }

    /// What holds at any end: whole files only, under their names; what was told has arrived.
    void ExpectNothingHalf(const NotedReport& report, bool mayBeHidden = false) {
        for (std::size_t target = 0; target < 2; ++target) {
            const Tree tree = Arrived(target);
            for (const auto& [name, content] : tree) {
                if (std::filesystem::path(name).filename().string().starts_with(".nqp2-")) {
                    EXPECT_TRUE(mayBeHidden) << name;
                } else if (name.find(".differs-") == std::string::npos) {
                    EXPECT_TRUE(m_content.contains(name) && m_content.at(name) == content) << name;
                }
            }
            if (const auto told = report.arrived.find(target); told != report.arrived.end()) {
                for (const auto& [name, how] : told->second) {
                    EXPECT_TRUE(tree.contains(name)) << name;
                }
            }
        }
    }
    void ExpectComplete(std::size_t target, const NotedReport& report) {
        EXPECT_TRUE(Arrived(target) == m_content) << target;
        EXPECT_EQ(report.arrived.contains(target) ? report.arrived.at(target).size() : 0,
                  m_content.size());
        for (const auto& items : {m_files, m_folders}) {
            for (const FanItem& item : items) {
                const platform::FileInfo info = InfoOf(Root(target) + '/' + item.path);
                EXPECT_TRUE(IsOfSameTime(info, item.info)) << item.path;
            }
        }
    }

    test::TempFolder m_source;
    test::TempFolder m_targets;
    std::vector<FanItem> m_files;
    std::vector<FanItem> m_folders;
    Tree m_content;
};

} // namespace nqp2::copy
