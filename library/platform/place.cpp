// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/place.h"

#include "NQP2ParserU/PathText.h"
#include "platform/case_blind.h"
#include "platform/folder_memory.h"
#include "platform/name_pattern.h"
#include "platform/unicode.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <system_error>
#include <utility>

namespace nqp2::platform {
namespace {

constexpr std::wstring_view kSeparators = L"\\/";

bool EndsAsFolder(const CString& text) {
    return text.IsEmpty() || kSeparators.find(text.View().back()) != std::wstring_view::npos;
}

/// Separators that both bring stay doubled: records show what the host wrote.
CString Join(const CString& folder, const CString& name) {
    const bool isJoined =
        EndsAsFolder(folder) ||
        (!name.IsEmpty() && kSeparators.find(name.View().front()) != std::wstring_view::npos);
    return isJoined ? folder + name : folder + L"\\" + name;
}

/// With a separator at its end, which asks for a folder; the empty path stays empty.
std::string PosixFolder(const CString& written) {
    return EndsAsFolder(written) ? PosixPath(written) : PosixPath(written + L"\\");
}

std::string WithoutEnd(const std::string& folder) {
    const std::size_t last = folder.find_last_not_of('/');
    return folder.substr(0, last == std::string::npos ? std::min<std::size_t>(1, folder.size())
                                                      : last + 1);
}

/// "CONTENTS\CLIP\" as the steps that folder.h takes.
std::string StepsOf(const CString& names) {
    std::wstring text(names.View());
    text.erase(0, text.find_first_not_of(kSeparators));
    std::replace(text.begin(), text.end(), L'\\', L'/');
    return NameBytesFromText(text);
}

bool IsOneName(const std::string& name) {
    return IsEntryName(name) && name.find('\\') == std::string::npos;
}

IoStatus NoSuchEntry() {
    return {IoError::NotFound, "there is no such file"};
}

} // namespace

struct Place::State {
    State(CString text, FolderMemory* known)
        : written(std::move(text)), asked(PosixFolder(written)), memory(known) {}

    /// Looks for the folder, once; by the entries of the place above where that is known.
    void Resolve() {
        if (isResolved) {
            return;
        }
        const std::shared_ptr<State> aboveIt = above.lock();
        FileInfo info;
        if (aboveIt == nullptr) {
            Settle(FindExisting(asked, memory));
        } else if (Files().Stat(asked, info)) {
            Settle(asked); // most are written as they are on disk
        } else {
            Settle(aboveIt->FindFolder(nameInIt));
        }
    }
    std::optional<std::string> FindFolder(const std::string& folder) {
        Resolve();
        if (!exists) {
            return std::nullopt;
        }
        FileInfo info;
        std::string found = PathTo(folder);
        if (!Files().Stat(found, info)) {
            const FolderEntry* const entry = Find(folder);
            if (entry == nullptr) {
                return std::nullopt;
            }
            found = PathTo(entry->name);
        }
        const bool isFolder = Files().Stat(found, info) && info.kind == EntryKind::Folder;
        return isFolder ? std::optional(found) : std::nullopt;
    }
    void Settle(const std::optional<std::string>& found) {
        isResolved = true;
        exists = found.has_value();
        onDisk = WithoutEnd(found.value_or(asked));
    }
    /// What has that very name; empty, which is never found, below the empty path.
    [[nodiscard]] std::string PathTo(const std::string& name) const {
        const std::string& folder = isResolved ? onDisk : asked;
        if (folder.empty()) {
            return {};
        }
        return folder.back() == '/' ? folder + name : folder + '/' + name;
    }
    // The path as it was asked for comes first: most exist so, and need no look of their own.
    IoStatus Stat(const std::string& name, FileInfo& info) {
        IoStatus status = Files().Stat(PathTo(name), info);
        if (status && !isResolved) {
            Settle(asked);
        }
        return status;
    }
    const FolderIndex& Names() {
        if (names.index == nullptr) {
            ReadNames();
        }
        return *names.index;
    }
    /// What differs only in case from a name under which nothing is there.
    const FolderEntry* Find(const std::string& name) {
        const FolderEntry* const entry = Names().Find(name);
        if (entry == nullptr || !names.areKept || IsStillThere(*entry)) {
            return entry;
        }
        names = memory->ListAgain(onDisk);
        return names.index->Find(name);
    }

    void ReadNames() {
        names = NamesAt(isResolved ? onDisk : WithoutEnd(asked));
        const IoError error = names.index->Status().error;
        if (!isResolved && error == IoError::None) {
            Settle(asked);
        } else if (!isResolved && error == IoError::NotFound) {
            Resolve();
            names = exists ? NamesAt(onDisk) : names;
        }
    }
    [[nodiscard]] KnownNames NamesAt(const std::string& folder) const {
        return memory != nullptr ? memory->NamesOf(folder) : ListNames(folder);
    }
    [[nodiscard]] bool IsStillThere(const FolderEntry& entry) const {
        FileInfo info;
        return Files().Stat(PathTo(entry.name), info).error != IoError::NotFound;
    }

    CString written;
    std::string asked; ///< for the file system, before it was looked for
    std::string onDisk;
    bool isResolved = false;
    bool exists = false;
    KnownNames names;
    FolderMemory* memory; ///< may be null
    std::map<std::wstring, Place> below;
    std::weak_ptr<State> above; ///< where this is one of its folders,
    std::string nameInIt;       ///< and how that was asked for
};

Place::Place(CString written, FolderMemory* memory)
    : m_state(std::make_shared<State>(std::move(written), memory)) {}

Place Place::At(std::string_view folder) {
    return Place(InterfaceRoot(folder));
}

const CString& Place::Written() const {
    return m_state->written;
}

CString Place::PathOf(const CString& name) const {
    return Join(m_state->written, name);
}

Place Place::Below(const CString& name) const {
    std::wstring key(name.View());
    const auto known = m_state->below.find(key);
    if (known != m_state->below.end()) {
        return known->second;
    }
    Place place(PathOf(name), m_state->memory);
    const std::string steps = StepsOf(name);
    const std::string step = steps.substr(0, steps.find_last_not_of('/') + 1);
    if (IsEntryName(step)) {
        place.m_state->above = m_state;
        place.m_state->nameInIt = step;
    }
    return m_state->below.emplace(std::move(key), std::move(place)).first->second;
}

const std::string& Place::OnDisk() const {
    m_state->Resolve();
    return m_state->onDisk;
}

IoStatus Place::Look() const {
    m_state->Resolve();
    FileInfo info;
    return m_state->exists ? IoStatus{} : Files().Stat(m_state->asked, info);
}

const FolderIndex& Place::Names() const {
    return m_state->Names();
}

std::vector<FoundFile> Place::List(const CString& pattern, IoStatus& status) const {
    std::vector<FoundFile> found;
    for (const FolderEntry& entry : Names().Entries()) {
        if (MatchesPattern(TextFromNameBytes(entry.name).View(), pattern.View())) {
            found.push_back(FileOf(entry));
        }
    }
    status = Names().Status();
    return found;
}

IoStatus Place::Ask(const std::string& name, FolderEntry& entry) const {
    if (!IsOneName(name) || m_state->asked.empty()) {
        return NoSuchEntry();
    }
    if (m_state->names.index == nullptr || m_state->names.areKept) {
        FileInfo info;
        IoStatus status = m_state->Stat(name, info);
        if (status.error != IoError::NotFound) {
            entry = {name, info.kind};
            return status;
        }
    }
    const FolderEntry* const known = m_state->Find(name);
    if (known != nullptr) {
        entry = *known;
        return {};
    }
    return Names().Status() ? NoSuchEntry() : Names().Status();
}

IoStatus Place::Find(const CString& name, FoundFile& found) const {
    FolderEntry entry;
    IoStatus status = Ask(NameBytesFromText(name.View()), entry);
    if (status) {
        found = FileOf(entry);
    }
    return status;
}

bool Place::Has(const CString& name) const {
    return Has(NameBytesFromText(name.View()));
}

bool Place::Has(const std::string& name) const {
    if (m_state->names.index != nullptr && !m_state->names.areKept) {
        return m_state->names.index->Contains(name);
    }
    FolderEntry entry;
    return static_cast<bool>(Ask(name, entry));
}

IoStatus Place::Open(std::unique_ptr<Folder>& folder) const {
    return Files().OpenFolder(OnDisk(), folder);
}

IoStatus Place::OpenBelow(const CString& names, std::unique_ptr<Folder>& folder) const {
    std::unique_ptr<Folder> root;
    IoStatus status = Open(root);
    return status ? platform::OpenBelow(*root, StepsOf(names), folder) : status;
}

IoStatus Place::MakeBelow(const CString& names, std::unique_ptr<Folder>& folder) const {
    std::unique_ptr<Folder> root;
    IoStatus status = Open(root);
    return status ? platform::MakeBelow(*root, StepsOf(names), folder) : status;
}

/// Records show the folder as it was asked for; the file is opened by the folder's real spelling.
FoundFile Place::FileOf(const FolderEntry& entry) const {
    const CString name = TextFromNameBytes(entry.name);
    const int dot = name.ReverseFind(L'.');
    FoundFile found;
    found.path = PathOf(name);
    found.title = dot < 0 ? name : name.Left(dot);
    m_state->Resolve();
    found.posixPath = m_state->PathTo(entry.name);
    found.isFolder = entry.kind == EntryKind::Folder;
    found.isSpecial = entry.kind == EntryKind::Other;
    found.pathIsSafe = name.Find(L'\\') < 0;
    return found;
}

PathParts SplitPath(const CString& path) {
    std::wstring_view text = path.View();
    if (text.ends_with(L':') && text.find_first_of(kSeparators) != std::wstring_view::npos) {
        text.remove_suffix(1); // a host's folder as a drive
    }
    const std::size_t nameStart = text.find_last_of(kSeparators) + 1;
    return {Place(nameStart == 0 ? CString(L".\\") : CString(text.substr(0, nameStart))),
            CString(text.substr(nameStart))};
}

std::string PathOnDisk(const CString& path, FolderMemory* memory) {
    const std::string asked = PosixPath(path);
    return FindExisting(asked, memory).value_or(asked);
}

CString FullPath(const CString& path) {
    const std::string file = PosixPath(path);
    if (file.empty() || file.front() == '/') {
        return path;
    }
    std::error_code error;
    const std::filesystem::path current = std::filesystem::current_path(error);
    return error ? path : TextFromNameBytes((current / "").native()) + path;
}

} // namespace nqp2::platform
