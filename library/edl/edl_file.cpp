// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "edl/edl_file.h"

#include "edl/edl_layout.h"
#include "edl/edl_writer.h"
#include "media/card_layout.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "platform/folder.h"
#include "platform/guid_text.h"
#include "platform/place.h"
#include "platform/unicode.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nqp2::edl {
namespace {

/// Where an edit list goes.
struct Target {
    platform::Place folder;
    std::vector<platform::Place> numbered; ///< no list in these gives its number again
    CString name;                          ///< "" for the next number
};

/// The name with an extension; looked for with its case, so that ".XML" gains a second: kept.
CString WithExtension(const CString& name) {
    return name.Find(L".xml") < 0 ? name + L".xml" : name;
}

/// A name that a card can hold, whatever the file system of its copy would take.
bool IsCardName(const CString& name) {
    constexpr std::wstring_view kUnfit = L"\"*<>?|";
    const std::wstring_view text = name.View();
    return media::IsPlainName(name) && std::none_of(text.begin(), text.end(), [&](wchar_t ch) {
               return ch < L' ' || kUnfit.find(ch) != std::wstring_view::npos;
           });
}

bool SaveNamed(const std::string& text, platform::Folder& folder, const Target& target,
               CString& saved) {
    const CString name = WithExtension(target.name);
    CString path =
        target.folder.PathOf(name); // once the list is written, nothing may fail any more
    std::string file;
    const bool done =
        IsCardName(name) &&
        platform::FindTargetIn(folder, platform::NameBytesFromText(name.View()), file) &&
        folder.WriteWhole(file, text);
    saved = done ? std::move(path) : saved;
    return done;
}

/// The next name that neither the look into the folders nor the file system refuses.
bool GiveFreeName(platform::FileWriter& file, EditListNumbers& numbers, const CString& id,
                  const platform::Place& folder, CString& saved) {
    constexpr int kTries = 1000;
    for (int tried = 0; tried < kTries; ++tried) {
        const std::optional<CString> next = numbers.NewName(id);
        if (!next) {
            return false;
        }
        if (!numbers.Holds(*next)) {
            CString path = folder.PathOf(*next);
            const platform::IoStatus given =
                file.CommitAs(platform::NameBytesFromText(next->View()));
            if (given || given.error != platform::IoError::Exists) {
                saved = given ? std::move(path) : saved;
                return static_cast<bool>(given);
            }
        }
        numbers.Add(*next);
    }
    return false;
}

CString IdentifierOf(const tag_P2EDLClipTrackEvent& event) {
    return event.GlobalClipID.IsEmpty() ? platform::GuidText(event.GlobalClipGuid)
                                        : event.GlobalClipID;
}

bool SaveNumbered(const std::string& text, platform::Folder& folder, const Target& target,
                  const CString& id, CString& saved) {
    std::optional<EditListNumbers> numbers = EditListNumbers::Read(target.numbered);
    const std::optional<CString> first = numbers ? numbers->NewName(id) : std::nullopt;
    // An identifier may put anything into the name, as a host may.
    if (!first || !IsCardName(*first)) {
        return false;
    }
    std::unique_ptr<platform::FileWriter> file;
    return folder.Create(platform::NameBytesFromText(first->View()), file) &&
           file->WriteAt(0, text) && file->Flush() &&
           GiveFreeName(*file, *numbers, id, target.folder, saved);
}

/// `below` names the target's folder below the card's root.
bool Save(const CString& root, const wchar_t* below, const Target& target, const tag_P2EDL& edl,
          CMarkupMSXML* reader, CString& saved) {
    std::unique_ptr<platform::Folder> folder;
    if (!platform::Place(media::WithDrive(root)).MakeBelow(below, folder) || reader == nullptr) {
        return false;
    }
    const std::optional<std::string> text =
        EditListText(platform::Place(media::ContentsFolder(root)), edl, *reader);
    if (!text) {
        return false;
    }
    static_cast<void>(folder->RemoveAbandoned()); // what cannot be removed is in the way of nothing
    return target.name.IsEmpty()
               ? SaveNumbered(*text, *folder, target, IdentifierOf(edl.Events[0]), saved)
               : SaveNamed(*text, *folder, target, saved);
}

} // namespace

bool SaveEditList(const CString& root, const tag_P2EDL& edl, const CString& name,
                  CMarkupMSXML* reader) {
    const platform::Place folder =
        platform::Place(media::WithDrive(root)).Below(media::kEditLists.BelowDrive());
    CString saved;
    return Save(root, media::kEditLists.BelowDrive(), {folder, {folder}, name}, edl, reader, saved);
}

bool SaveCardEditList(const CString& root, const tag_P2EDL& edl, const CString& name,
                      CMarkupMSXML* reader, CString& saved) {
    const platform::Place card = platform::Place(media::WithDrive(root));
    const platform::Place inRoot = card.Below(media::kEditLists.BelowDrive());
    const platform::Place inContents = card.Below(media::kContentsEditLists.BelowDrive());
    const bool keptInContents = !inRoot.Exists() && inContents.Exists();
    return Save(
        root,
        keptInContents ? media::kContentsEditLists.BelowDrive() : media::kEditLists.BelowDrive(),
        {keptInContents ? inContents : inRoot, {inRoot, inContents}, name}, edl, reader, saved);
}

} // namespace nqp2::edl
