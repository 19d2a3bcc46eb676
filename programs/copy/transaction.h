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
/// made itself, and nothing of anybody else's. Used by one thread.
class Transaction {
public:
    Transaction() = default;
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();

    /// Opens the root, an absolute path in any letter case that may be a link; with `make` it is
    /// made when it is missing, and so is all above it.
    Outcome Open(const std::string& root, bool make);
    [[nodiscard]] platform::Folder& Root() const { return *m_root; }

    /// Keeps the name, of whatever arrives, from all other transactions in this root while this one
    /// lasts. Fails at once when one of them has it, or when names cannot be kept.
    Outcome Reserve(const std::string& name);
    /// The same for a name that another one will do for.
    Outcome TryReserve(const std::string& name, bool& taken);

    /// Removes what killed writers have left in a folder below the root, or with "" in itself.
    /// Failing to is no reason not to go on.
    void Sweep(const std::string& folder);

    /// Tells the items that are missing from those that are there with the same content; anything
    /// else in their places fails. The items outlive the transaction.
    Outcome Look(const std::vector<Item>& items, Copier& copier);
    /// Fails when what is missing does not fit.
    Outcome CheckSpace();
    /// Writes what is missing under hidden names and verifies it. `written`: bytes.
    Outcome Write(Copier& copier, std::uint64_t& written);
    /// Gives the names in the items' order.
    Outcome Commit();

private:
    struct Place {
        std::string path;
        std::shared_ptr<platform::Folder> folder; ///< null as long as it is missing
        platform::FolderIndex names;              ///< when it was opened
    };
    struct Pending {
        const Item* item = nullptr;
        Place* place = nullptr;
        std::unique_ptr<platform::FileWriter> writer;
    };
    struct Made {
        std::shared_ptr<platform::Folder> parent;
        std::string name;
    };

    Outcome MakeRoot(std::string above, std::vector<std::string>& missing);
    Outcome PlaceOf(const std::string& folder, Place*& place);
    Outcome MakePlace(Place& place, const std::string& folder);
    /// Opens a folder, which it makes when it is missing.
    Outcome Step(const std::shared_ptr<platform::Folder>& above, const std::string& name,
                 std::shared_ptr<platform::Folder>& folder);
    Outcome LookAt(const Item& item, Copier& copier);
    /// Makes an item's file, under a hidden name, and its folder.
    Outcome Begin(Pending& pending);
    void TakeBack(std::size_t named);

    std::shared_ptr<platform::Folder> m_root;
    std::string m_rootPath;
    std::vector<std::unique_ptr<platform::NameLock>> m_locks;
    std::map<std::string, Place> m_places;
    std::vector<Made> m_made;
    std::vector<Pending> m_missing;
    bool m_isDone = false;
};

} // namespace nqp2::copy
