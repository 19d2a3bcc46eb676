// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "cards/card_search.h"

#include "cards/card_marks.h"
#include "NQP2ParserU/PathText.h"
#include "platform/case_fold.h"
#include "platform/folder.h"
#include "platform/place.h"
#include "platform/unicode.h"

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace nqp2::cards {
namespace {

using platform::EntryKind;
using platform::Folder;
using platform::FolderEntry;
using platform::IoStatus;

/// One walk over a tree of folders, each held by its handle while those below it are looked at.
class Search {
public:
    Search(const SearchOrder& order, CardSearch& found)
        : m_order(order), m_found(found), m_folders(order.limits.folders) {}

    void Run(const std::string& folder) {
        std::unique_ptr<Folder> top;
        if (const IoStatus status = platform::Files().OpenFolder(folder, top); !status) {
            Skip(folder, SkipReason::Unreadable, status.reason);
        } else {
            Walk(*top, folder, 0);
        }
    }

private:
    void Walk(Folder& folder, const std::string& path, std::int32_t depth) {
        std::vector<FolderEntry> entries;
        if (const IoStatus status = folder.List(entries); !status) {
            Skip(path, SkipReason::FolderUnreadable, status.reason);
        }
        std::sort(entries.begin(), entries.end(),
                  [](const auto& left, const auto& right) { return left.name < right.name; });
        const std::vector<const CardMark*> marks = Look(path, entries);
        for (const FolderEntry& entry : entries) {
            if (entry.kind == EntryKind::Folder && !IsPartOfCard(entry, marks)) {
                GoBelow(folder, entry.name, platform::PathIn(path, entry.name), depth + 1);
            }
        }
    }

    void GoBelow(Folder& folder, const std::string& name, const std::string& path,
                 std::int32_t depth) {
        // In the top of a memory card it is a step that nobody counts.
        if (depth > m_order.limits.depth + (IsPrivate(path) ? 1 : 0)) {
            if (m_order.tellsDepth) {
                SkipOnce(m_isDeep, path, "folders this far below are not searched");
            }
            return;
        }
        if (m_folders-- <= 0) {
            SkipOnce(m_isFull, path, "there are more folders than are searched");
            return;
        }
        std::unique_ptr<Folder> below;
        if (const IoStatus status = folder.OpenFolder(name, below); !status) {
            Skip(path, SkipReason::Unreadable, status.reason);
        } else {
            Walk(*below, path, depth);
        }
    }

    /// Adds the cards that begin at a folder. Only one with such an entry is looked at closely.
    std::vector<const CardMark*> Look(const std::string& path,
                                      const std::vector<FolderEntry>& entries) {
        const bool mayBeCard =
            std::any_of(entries.begin(), entries.end(), [](const FolderEntry& entry) {
                return std::any_of(CardMarks().begin(), CardMarks().end(),
                                   [&](const CardMark& mark) { return IsNamed(entry, mark); });
            });
        if (!mayBeCard) {
            return {};
        }
        const CString root = InterfaceRoot(path);
        const platform::Place place(root);
        std::vector<const CardMark*> marks;
        if (root.IsEmpty()) {
            Skip(path, SkipReason::UnsafeName, "a folder's name must not contain \":\\\"");
        } else {
            marks = MarksIn(place, m_order.kinds);
        }
        for (const CardMark* const mark : marks) {
            Add(CardAt(place, root, *mark));
        }
        return marks;
    }

    void Add(FoundCard card) {
        if (m_known.insert({card.device, card.inode}).second) {
            m_found.cards.Add(std::move(card));
        }
    }

    static bool IsNamed(const FolderEntry& entry, const CardMark& mark) {
        return platform::FoldNameCase(entry.name) == FirstStep(mark);
    }
    static bool IsPartOfCard(const FolderEntry& entry, const std::vector<const CardMark*>& marks) {
        return std::any_of(marks.begin(), marks.end(),
                           [&](const CardMark* mark) { return IsNamed(entry, *mark); });
    }

    void Skip(const std::string& path, SkipReason reason, const std::string& why) {
        const CString root = InterfaceRoot(path);
        m_found.skipped.Add({root.IsEmpty() ? platform::TextFromNameBytes(path) : root, reason,
                             platform::TextFromUtf8(why)});
    }
    void SkipOnce(bool& isTold, const std::string& path, const char* why) {
        if (!std::exchange(isTold, true)) {
            Skip(path, SkipReason::TooLarge, why);
        }
    }

    const SearchOrder& m_order;
    CardSearch& m_found;
    std::int32_t m_folders; ///< that may still be looked into
    bool m_isDeep = false;
    bool m_isFull = false;
    std::set<std::pair<std::uint64_t, std::uint64_t>> m_known;
};

} // namespace

void SearchCards(const CString& folder, const SearchOrder& order, CardSearch& found) {
    CardSearch own;
    Search(order, own).Run(platform::Place(media::WithDrive(folder)).OnDisk());
    std::sort(own.cards.begin(), own.cards.end(), [](const auto& left, const auto& right) {
        return std::make_tuple(PosixPath(left.root), left.kind) <
               std::make_tuple(PosixPath(right.root), right.kind);
    });
    found.cards.Append(own.cards);
    found.skipped.Append(own.skipped);
}

} // namespace nqp2::cards
