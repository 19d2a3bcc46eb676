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

using platform::IoStatus;

namespace {

constexpr const char* kNoNumber = "the card has edit lists of all numbers from 1 to 999";

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

/// A failure of the system with what failed before its words.
IoStatus Told(const std::string& what, IoStatus status) {
    if (!status) {
        status.reason = what + ": " + status.reason;
    }
    return status;
}

IoStatus SaveNamed(const std::string& text, platform::Folder& folder, const Target& target,
                   CString& saved) {
    const CString name = WithExtension(target.name);
    const std::string shown = platform::Utf8FromText(name.View());
    if (!IsCardName(name)) {
        return Refusal(shown + " is no name that a card's file can have");
    }
    CString path =
        target.folder.PathOf(name); // once the list is written, nothing may fail any more
    std::string file;
    IoStatus status =
        platform::FindTargetIn(folder, platform::NameBytesFromText(name.View()), file);
    if (status) {
        status = folder.WriteWhole(file, text);
    }
    if (status) {
        saved = std::move(path);
    }
    return Told(shown, std::move(status));
}

/// The next name that neither the look into the folders nor the file system refuses.
IoStatus GiveFreeName(platform::FileWriter& file, EditListNumbers& numbers, const CString& id,
                      const platform::Place& folder, CString& saved) {
    constexpr int kTries = 1000;
    for (int tried = 0; tried < kTries; ++tried) {
        const std::optional<CString> next = numbers.NewName(id);
        if (!next) {
            break;
        }
        if (!numbers.Holds(*next)) {
            CString path = folder.PathOf(*next);
            IoStatus given = file.CommitAs(platform::NameBytesFromText(next->View()));
            if (given || given.error != platform::IoError::Exists) {
                saved = given ? std::move(path) : saved;
                return Told(platform::Utf8FromText(next->View()), std::move(given));
            }
        }
        numbers.Add(*next);
    }
    return Refusal(kNoNumber);
}

CString IdentifierOf(const tag_P2EDLClipTrackEvent& event) {
    return event.GlobalClipID.IsEmpty() ? platform::GuidText(event.GlobalClipGuid)
                                        : event.GlobalClipID;
}

IoStatus SaveNumbered(const std::string& text, platform::Folder& folder, const Target& target,
                      const CString& id, CString& saved) {
    std::optional<EditListNumbers> numbers = EditListNumbers::Read(target.numbered);
    if (!numbers) {
        return Refusal("the card's edit lists cannot be counted: a folder of them cannot be read");
    }
    const std::optional<CString> first = numbers->NewName(id);
    if (!first) {
        return Refusal(kNoNumber);
    }
    const std::string shown = platform::Utf8FromText(first->View());
    // An identifier may put anything into the name, as a host may.
    if (!IsCardName(*first)) {
        return Refusal(shown + ", named after the identifier, is no name for a card's file");
    }
    std::unique_ptr<platform::FileWriter> file;
    IoStatus status = folder.Create(platform::NameBytesFromText(first->View()), file);
    if (status) {
        status = file->WriteAt(0, text);
    }
    if (status) {
        status = file->Flush();
    }
    return status ? GiveFreeName(*file, *numbers, id, target.folder, saved)
                  : Told(shown, std::move(status));
}

/// `below` names the target's folder below the card's root.
IoStatus Save(const CString& root, const wchar_t* below, const Target& target, const tag_P2EDL& edl,
              CMarkupMSXML* reader, CString& saved) {
    std::unique_ptr<platform::Folder> folder;
    IoStatus status = platform::Place(media::WithDrive(root)).MakeBelow(below, folder);
    if (!status) {
        return Told("the folder of edit lists", std::move(status));
    }
    if (reader == nullptr) {
        return Refusal("Init was not called");
    }
    std::string text;
    status = EditListText(platform::Place(media::ContentsFolder(root)), edl, *reader, text);
    if (!status) {
        return status;
    }
    static_cast<void>(folder->RemoveAbandoned()); // what cannot be removed is in the way of nothing
    return target.name.IsEmpty()
               ? SaveNumbered(text, *folder, target, IdentifierOf(edl.Events[0]), saved)
               : SaveNamed(text, *folder, target, saved);
}

} // namespace

IoStatus SaveEditList(const CString& root, const tag_P2EDL& edl, const CString& name,
                      CMarkupMSXML* reader) {
    const platform::Place folder =
        platform::Place(media::WithDrive(root)).Below(media::kEditLists.BelowDrive());
    CString saved;
    return Save(root, media::kEditLists.BelowDrive(), {folder, {folder}, name}, edl, reader, saved);
}

IoStatus SaveCardEditList(const CString& root, const tag_P2EDL& edl, const CString& name,
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
