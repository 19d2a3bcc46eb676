// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/clip_names.h"

#include "platform/case_fold.h"
#include "platform/unicode.h"

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace nqp2::worker {
namespace {

constexpr int kMostNumbers = 9999;

/// The number of a name of four digits and two more characters.
std::optional<int> NumberOf(std::wstring_view name) {
    constexpr std::size_t kLength = 6;
    constexpr std::size_t kDigits = 4;
    const std::wstring_view digits = name.substr(0, kDigits);
    if (name.size() != kLength || digits.find_first_not_of(L"0123456789") != digits.npos) {
        return std::nullopt;
    }
    int number = 0;
    for (const wchar_t digit : digits) {
        number = number * 10 + static_cast<int>(digit - L'0');
    }
    return number;
}

/// Whether a clip of that name has arrived: its metadata file is the last to get a name.
bool HasArrived(const CardFolders& card, const CString& name) {
    std::unique_ptr<platform::Folder> clips;
    platform::FileInfo info;
    return OpenBelow(*card.contents, media::kMetadataFiles.folder.Bytes(), clips) &&
           clips->Stat(MetadataName(name), info);
}

/// Nothing when the name is taken.
std::optional<ClaimedName> TryClaim(const CardFolders& card, const CString& name) {
    ClaimedName claimed{name, nullptr};
    const platform::IoStatus status = card.root->LockName(Shown(name), claimed.lock);
    if (status.error == platform::IoError::Busy) {
        return std::nullopt;
    }
    copy::Require(status, "claim the name " + Shown(name) + " in", card.root->Path());
    // Between the look at the card and the lock another one may have finished.
    return HasArrived(card, name) ? std::nullopt : std::optional(std::move(claimed));
}

ClipNames NamesOn(const CardFolders& card) {
    ClipNames names;
    // A place of its own: the card's folders may have been made since it was opened.
    names.Read(ListByPath(platform::Place(card.written)));
    return names;
}

} // namespace

void ClipNames::Read(const ListFolder& list) {
    const std::vector<std::wstring> names = TakenNames(list);
    m_taken = std::set<std::wstring>(names.begin(), names.end());
}

bool ClipNames::IsTaken(const CString& name) const {
    return m_taken.count(platform::FoldCase(name.View())) != 0;
}

void ClipNames::Take(const CString& name) {
    m_taken.insert(platform::FoldCase(name.View()));
}

CString ClipNames::FindFree(const CString& wanted) const {
    const std::optional<int> number = NumberOf(wanted.View());
    const CString ending = number ? wanted.Right(2) : CString(L"AA");
    for (int step = 0; step < kMostNumbers; ++step) {
        CString candidate;
        candidate.Format(L"%04d%s", (number.value_or(0) + step) % kMostNumbers + 1, ending);
        if (!IsTaken(candidate)) {
            return candidate;
        }
    }
    throw copy::Failure("All clip names of the card are taken.");
}

void CheckRecordingName(const CString& name) {
    constexpr std::size_t kLongest = 240;               // bytes, before "00.MXF"
    constexpr std::wstring_view kOfNoCard = L"\"*<>?|"; // FAT and exFAT have no such names
    const std::wstring_view text = name.View();
    CheckClipName(name);
    const bool fits = platform::NameBytesFromText(text).size() <= kLongest &&
                      text.find_first_of(kOfNoCard) == text.npos && text.back() != L' ' &&
                      text.back() != L'.';
    if (!fits) {
        throw copy::Failure("\"" + Shown(name) + "\" is no name that a card can hold.");
    }
}

ClaimedName ClaimName(const CardFolders& card, const CString& wanted) {
    CheckRecordingName(wanted);
    std::optional<ClaimedName> claimed;
    if (!NamesOn(card).IsTaken(wanted)) {
        claimed = TryClaim(card, wanted);
    }
    if (!claimed) {
        throw copy::Failure("There is a clip " + Shown(wanted) + " on the card already.");
    }
    return *std::move(claimed);
}

ClaimedName ClaimFreeName(const CardFolders& card, const CString& after) {
    ClipNames taken = NamesOn(card);
    CString name = after.IsEmpty() ? CString(L"0000AA") : after;
    std::optional<ClaimedName> claimed;
    while (!claimed) {
        taken.Take(name);
        name = taken.FindFree(name);
        claimed = TryClaim(card, name);
    }
    return *std::move(claimed);
}

} // namespace nqp2::worker
