// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "copy/folder_way.h"

#include "copy/failure.h"
#include "copy/new_file.h"
#include "copy/target_end.h"

#include <algorithm>
#include <utility>

namespace nqp2::copy {

using platform::EntryKind;
using platform::Folder;
using platform::IoError;
using platform::IoStatus;
using platform::PathIn;

namespace {

constexpr std::size_t kFew = 8;

std::shared_ptr<Folder> OpenOrMake(const std::string& path) {
    std::unique_ptr<Folder> folder;
    IoStatus status = platform::Files().OpenFolder(path, folder);
    const std::string inside = path.substr(0, path.find_last_not_of('/') + 1);
    if (status.error == IoError::NotFound && !inside.empty()) {
        const std::string above = platform::FolderPart(inside);
        const std::shared_ptr<Folder> parent = OpenOrMake(above);
        status = parent->MakeFolder(platform::NamePart(inside));
        if (status || status.error == IoError::Exists) {
            status = platform::Files().OpenFolder(path, folder);
        }
    }
    Require(status, "open the folder", path);
    return folder;
}

} // namespace

std::string_view FolderPathOf(std::string_view path) {
    const std::size_t end = path.find_last_of('/');
    return path.substr(0, end == std::string_view::npos ? 0 : end);
}

FolderWay::Step& FolderWay::Reach(std::string_view path) {
    std::size_t depth = 1;
    while (!path.empty()) {
        const std::size_t length = std::min(path.find('/'), path.size());
        const std::string_view name = path.substr(0, length);
        if (depth == m_steps.size() || m_steps[depth].name != name) {
            m_steps.resize(depth);
            Step step{std::string(name), nullptr, {}};
            Enter(m_steps.back(), step);
            m_steps.push_back(std::move(step));
        }
        ++depth;
        path.remove_prefix(std::min(length + 1, path.size()));
    }
    m_steps.resize(depth);
    return m_steps.back();
}

ReadingWay::ReadingWay(Folder& root) {
    m_steps.push_back({"", std::shared_ptr<Folder>(std::shared_ptr<Folder>(), &root), {}});
}

void ReadingWay::Enter(Step& above, Step& step) {
    std::unique_ptr<Folder> opened;
    Require(above.folder->OpenFolder(step.name, opened), "open the folder",
            PathIn(above.folder->Path(), step.name));
    step.folder = std::move(opened);
}

WritingWay::WritingWay(const std::string& root) : WritingWay(OpenOrMake(root)) {}

WritingWay::WritingWay(std::shared_ptr<Folder> root) {
    m_steps.push_back({"", std::move(root), {}});
    LookInto(m_steps.back());
}

void WritingWay::LookInto(Step& step) {
    // That it fails is no reason not to go on.
    static_cast<void>(step.folder->RemoveAbandoned());
    std::vector<platform::FolderEntry> entries;
    RequireOn(step.folder->List(entries), "list the folder", step.folder->Path());
    for (platform::FolderEntry& entry : entries) {
        step.names.emplace(std::move(entry.name), entry.kind);
    }
}

void WritingWay::Enter(Step& above, Step& step) {
    const std::string path = PathIn(above.folder->Path(), step.name);
    const auto known = above.names.find(step.name);
    const bool isNew = known == above.names.end();
    if (isNew) {
        const IoStatus made = above.folder->MakeUnflushed(step.name);
        if (made.error == IoError::Exists) {
            throw Failure(path + " cannot be made: something has that name in other letters, or "
                                 "has got it just now.");
        }
        RequireOn(made, "make the folder", path);
        above.names.emplace(step.name, EntryKind::Folder);
        Touch(above.folder);
    } else if (known->second != EntryKind::Folder) {
        throw Failure(InTheWay(path, known->second));
    }
    std::unique_ptr<Folder> opened;
    RequireOn(above.folder->OpenFolder(step.name, opened), "open the folder", path);
    step.folder = std::move(opened);
    if (!isNew) {
        LookInto(step);
    }
}

void WritingWay::Touch(const std::shared_ptr<Folder>& folder) {
    if (std::find(m_touched.begin(), m_touched.end(), folder) != m_touched.end()) {
        return;
    }
    if (m_touched.size() < kFew) {
        m_touched.push_back(folder);
    } else {
        m_hasTouchedMore = true;
    }
}

void WritingWay::FlushNames() {
    if (m_hasTouchedMore) {
        RequireOn(Root().FlushAll(), "write", Root().Path());
    } else {
        for (const std::shared_ptr<Folder>& folder : m_touched) {
            RequireOn(folder->Flush(), "write", folder->Path());
        }
    }
    ForgetTouched();
}

void WritingWay::ForgetTouched() {
    m_touched.clear();
    m_hasTouchedMore = false;
}

} // namespace nqp2::copy
