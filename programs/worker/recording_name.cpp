// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/recording_name.h"

#include "platform/unicode.h"
#include "worker/free_clip_name.h"

#include <string>
#include <string_view>
#include <utility>

namespace nqp2::worker {
namespace {

Outcome IsTaken(const CString& name) {
    return Failure("There is a clip " + Shown(name) + " on the card already.");
}

/// Whether a clip of that name has arrived: its metadata file is the last to get a name.
bool HasArrived(const CardFolders& card, const CString& name) {
    std::unique_ptr<platform::Folder> clips;
    platform::FileInfo info;
    return OpenBelow(*card.contents, "CLIP", clips) &&
           clips->Stat(platform::NameBytesFromText(name.View()) + ".XML", info);
}

enum class Claim { Done, Taken, Failed };

Claim TryClaim(const CardFolders& card, const CString& name, ClaimedName& claimed,
               Outcome& outcome) {
    std::unique_ptr<platform::NameLock> lock;
    const platform::IoStatus status = card.root->LockName(Shown(name), lock);
    if (!status && status.error != platform::IoError::Busy) {
        outcome = Failure("claim the name " + Shown(name) + " in", card.root->Path(), status);
        return Claim::Failed;
    }
    // Between the look at the card and the lock another one may have finished.
    if (!status || HasArrived(card, name)) {
        return Claim::Taken;
    }
    claimed.name = name;
    claimed.lock = std::move(lock);
    return Claim::Done;
}

} // namespace

Outcome CheckRecordingName(const CString& name) {
    constexpr std::size_t kLongest = 240;               // bytes, before "00.MXF"
    constexpr std::wstring_view kOfNoCard = L"\"*<>?|"; // FAT and exFAT have no such names
    const std::wstring_view text = name.View();
    if (Outcome outcome = CheckClipName(name); !outcome) {
        return outcome;
    }
    const bool fits = platform::NameBytesFromText(text).size() <= kLongest &&
                      text.find_first_of(kOfNoCard) == text.npos && text.back() != L' ' &&
                      text.back() != L'.';
    return fits ? Outcome() : Failure("\"" + Shown(name) + "\" is no name that a card can hold.");
}

Outcome ClaimName(const CardFolders& card, const CString& wanted, ClaimedName& claimed) {
    ClipNames taken;
    Outcome outcome = CheckRecordingName(wanted);
    if (outcome) {
        outcome = taken.Read(card.contents->Path());
    }
    if (!outcome) {
        return outcome;
    }
    const bool mayTry = !taken.IsTaken(wanted);
    const Claim claim = mayTry ? TryClaim(card, wanted, claimed, outcome) : Claim::Taken;
    return claim == Claim::Taken ? IsTaken(wanted) : outcome;
}

Outcome ClaimFreeName(const CardFolders& card, const CString& after, ClaimedName& claimed) {
    ClipNames taken;
    Outcome outcome = taken.Read(card.contents->Path());
    CString name = after.IsEmpty() ? CString(L"0000AA") : after;
    Claim claim = Claim::Taken;
    while (outcome && claim == Claim::Taken) {
        taken.Take(name);
        outcome = taken.FindFree(name, name);
        if (outcome) {
            claim = TryClaim(card, name, claimed, outcome);
        }
    }
    return outcome;
}

} // namespace nqp2::worker
