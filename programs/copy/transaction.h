// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/copier.h"
#include "platform/folder.h"
#include "platform/folder_index.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace nqp2::copy {

/// One file that is to arrive.
struct Item {
    Source source;
    std::string folder; ///< below the root: "CONTENTS/VIDEO"; found in any letter case, else made
    std::string name;
};

/// Files that arrive below one folder together or not at all. Nothing is written through a link
/// below it, nothing is overwritten, and nothing has its name before all are verified. What was not
/// committed is gone again with the object: files and, where they are empty, folders that it has
/// made itself, and nothing of anybody else's. Everything throws a Failure. Used by one thread.
class Transaction {
public:
    Transaction() = default;
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();

    /// Opens the root, an absolute path in any letter case that may be a link; with `make` it is
    /// made when it is missing, and so is all above it.
    void Open(const std::string& root, bool make);
    [[nodiscard]] platform::Folder& Root() const { return *m_root; }

    /// Keeps the name, of whatever arrives, from all other transactions in this root while this one
    /// lasts. Fails at once when one of them has it, or when names cannot be kept.
    void Reserve(const std::string& name);
    /// The same for a name that another one will do for: false when it is taken.
    bool TryReserve(const std::string& name);

    /// Removes what killed writers have left in a folder below the root, or with "" in itself.
    /// Failing to is no reason not to go on.
    void Sweep(const std::string& folder);

    /// Tells the items that are missing from those that are there with the same content; anything
    /// else in their places fails. The items outlive the transaction.
    void Look(const std::vector<Item>& items, Copier& copier);
    /// Fails when what is missing does not fit.
    void CheckSpace();
    /// Writes what is missing under hidden names and verifies it. Adds its bytes to `written`, file
    /// by file: those before a failure count.
    void Write(Copier& copier, std::uint64_t& written);
    /// Gives the names in the items' order.
    void Commit();

private:
    /// A folder that items go to.
    struct Target {
        std::string path;
        std::shared_ptr<platform::Folder> folder; ///< null as long as it is missing
        platform::FolderIndex names;              ///< when it was opened
    };
    struct Pending {
        const Item* item = nullptr;
        Target* target = nullptr;
        std::unique_ptr<platform::FileWriter> writer;
    };
    struct Made {
        std::shared_ptr<platform::Folder> parent;
        std::string name;
    };

    void MakeRoot(std::string above, std::vector<std::string>& missing);
    Target& TargetOf(const std::string& folder);
    [[nodiscard]] Target OpenTarget(const std::string& folder) const;
    void MakeTarget(Target& target, const std::string& folder);
    /// Opens a folder, which it makes when it is missing.
    std::shared_ptr<platform::Folder> Step(const std::shared_ptr<platform::Folder>& above,
                                           const std::string& name);
    void LookAt(const Item& item, Copier& copier);
    /// Makes an item's file, under a hidden name, and its folder.
    void Begin(Pending& pending);

    std::shared_ptr<platform::Folder> m_root;
    std::string m_rootPath;
    std::vector<std::unique_ptr<platform::NameLock>> m_locks;
    std::map<std::string, Target> m_targets;
    std::vector<Made> m_made;
    std::vector<Pending> m_missing;
    std::size_t m_named = 0; ///< how many of them have their names
    bool m_isDone = false;
};

} // namespace nqp2::copy
