// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Gives a folder to one or more targets by the copying engine alone.
//
//     fan_once SOURCE TARGET...

#include "copy/failure.h"
#include "copy/fan.h"

#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace nqp2::bench {
namespace {

using platform::EntryKind;
using platform::Folder;

class FailingReport final : public copy::FanReport {
public:
    bool GoesOn() override { return true; }
    void HasRead(const copy::FanItem&, const copy::Digest::Bytes&) override {}
    void CannotRead(const copy::FanItem&, const std::string& sentence) override {
        throw copy::Failure(sentence);
    }
    void HasArrived(std::size_t, const copy::FanItem&, copy::Arrival) override {}
    void HasSetAside(std::size_t, const copy::FanItem& file, const std::string&) override {
        throw copy::Failure(file.path + " was there.");
    }
    void HasFailed(std::size_t, const copy::FanItem&, const std::string& sentence) override {
        throw copy::Failure(sentence);
    }
    void HasEnded(std::size_t, const std::string& sentence) override {
        throw copy::Failure(sentence);
    }
};

/// Folder by folder, so that what is listed takes little memory.
void CopyBelow(copy::Fan& fan, Folder& folder, const std::string& path) {
    std::vector<platform::FolderEntry> entries;
    copy::Require(folder.List(entries), "list", folder.Path());
    for (const platform::FolderEntry& entry : entries) {
        copy::FanItem item{path.empty() ? entry.name : path + '/' + entry.name, {}, 0};
        copy::Require(folder.Stat(entry.name, item.info), "look at", item.path);
        if (entry.kind == EntryKind::Folder) {
            std::unique_ptr<Folder> below;
            copy::Require(folder.OpenFolder(entry.name, below), "open", item.path);
            CopyBelow(fan, *below, item.path);
        } else {
            fan.Copy(item);
        }
    }
}

void CopyAll(const std::string& from, const std::vector<std::string>& targets) {
    std::unique_ptr<Folder> source;
    copy::Require(platform::Files().OpenFolder(from, source), "open", from);
    FailingReport report;
    copy::Fan fan(*source, {targets.begin(), targets.end()}, {}, report);
    CopyBelow(fan, *source, "");
    fan.Finish();
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: fan_once SOURCE TARGET...\n");
        return 2;
    }
    try {
        nqp2::bench::CopyAll(argv[1], {argv + 2, argv + argc});
    } catch (const std::exception& error) {
        std::fprintf(stderr, "fan_once: %s\n", error.what());
        return 1;
    }
    return 0;
}
