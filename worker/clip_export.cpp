// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/clip_export.h"

#include "platform/case_blind.h"
#include "platform/case_fold.h"
#include "platform/file_system.h"
#include "platform/unicode.h"
#include "worker/card_folder.h"
#include "worker/clip_files.h"
#include "worker/clip_metadata.h"
#include "worker/free_clip_name.h"
#include "worker/verified_copy.h"
#include "xml/dom/XmlLimits.h"

#include <algorithm>

namespace nqp2::worker {
namespace {

/// A clip on its way to a card.
struct Traveller {
    CString name;
    CString newName;
    std::vector<ClipFile> files; ///< metadata last
    std::string xml;
    std::string identifier;
};

Outcome ReadTraveller(const std::string& contents, const CString& name, Traveller& clip) {
    clip.name = name;
    if (Outcome outcome = CollectClip(contents, name, clip.files); !outcome) {
        return outcome;
    }
    const std::string& path = clip.files.back().path;
    const auto status = platform::Files().Read(path, MaxXmlFileSize(), clip.xml);
    return status ? ReadIdentifier(clip.xml, path, clip.identifier) : Failure("read", path, status);
}

bool SameRole(const ClipFile& left, const ClipFile& right) {
    return left.folder == right.folder &&
           platform::FoldNameCase(left.suffix) == platform::FoldNameCase(right.suffix);
}

bool HoldsSame(const ClipFile& onCard, const std::string& xml) {
    std::string found;
    return platform::Files().Read(onCard.path, xml.size(), found) && found == xml;
}

/// The file of the clip that stands for one on the card, null when there is none of that size.
const ClipFile* Counterpart(const Traveller& clip, const ClipFile& onCard) {
    const auto own = std::find_if(clip.files.begin(), clip.files.end(),
                                  [&](const ClipFile& each) { return SameRole(each, onCard); });
    return own != clip.files.end() && own->size == onCard.size ? &*own : nullptr;
}

/// Whether what stands on the card under the clip's name is this very clip or a part of it, left by
/// an export that was repeated or interrupted. Metadata tell one clip from another, and the transfer
/// compares what they describe; essence without any is compared here.
Outcome IsSameClip(const Traveller& clip, const std::vector<ClipFile>& onCard,
                   VerifiedCopier& comparer, bool& same) {
    same = !onCard.empty() && std::all_of(onCard.begin(), onCard.end(), [&](const ClipFile& each) {
        return Counterpart(clip, each) != nullptr;
    });
    if (same && onCard.back().part == ClipPart::Metadata) {
        same = HoldsSame(onCard.back(), clip.xml);
        return {};
    }
    Outcome outcome;
    for (std::size_t i = 0; outcome && same && i < onCard.size(); ++i) {
        const ClipFile& own = *Counterpart(clip, onCard[i]);
        outcome = comparer.Compare(onCard[i].path, own.path, own.size, same);
    }
    return outcome;
}

/// Hears of what is read before the transfer begins: it can be ended, and nothing is done yet.
class WatchBefore final : public TransferWatch {
public:
    WatchBefore(TransferWatch& watch, const std::vector<Traveller>& clips) : m_watch(watch) {
        for (const Traveller& clip : clips) {
            for (const ClipFile& file : clip.files) {
                m_total += file.size;
            }
        }
    }
    bool GoesOn(std::uint64_t, std::uint64_t) override { return m_watch.GoesOn(0, m_total); }
    bool MayFinish(std::uint64_t) override { return false; }

private:
    TransferWatch& m_watch;
    std::uint64_t m_total = 0;
};

class ExportPlan {
public:
    ExportPlan(std::string target, VerifiedCopier& comparer)
        : m_target(std::move(target)), m_comparer(comparer) {}

    Outcome ChooseNames(std::vector<Traveller>& clips) {
        if (Outcome outcome = m_names.Read(m_target); !outcome) {
            return outcome;
        }
        for (Traveller& clip : clips) {
            if (Outcome outcome = ChooseName(clip); !outcome) {
                return outcome;
            }
            m_names.Take(clip.newName);
            if (clip.newName != clip.name) {
                m_renamed[platform::FoldCase(clip.name.View())] = {clip.newName, clip.identifier};
            }
        }
        return {};
    }

    Outcome AddItems(const Traveller& clip, std::vector<TransferItem>& items) const {
        const std::string name = platform::NameBytesFromText(clip.newName.View());
        for (const ClipFile& file : clip.files) {
            items.push_back(ItemFor(file, name));
        }
        TransferItem& metadata = items.back();
        std::string xml;
        bool changed = false;
        Outcome outcome =
            RenameInMetadata(clip.xml, metadata.source, clip.name, m_renamed, xml, changed);
        metadata.size = xml.size();
        metadata.content = std::move(xml);
        return outcome;
    }

private:
    Outcome ChooseName(Traveller& clip) const {
        clip.newName = clip.name;
        if (!m_names.IsTaken(clip.name)) {
            return {};
        }
        std::vector<ClipFile> onCard;
        if (Outcome outcome = FindClipFiles(m_target, clip.name, onCard); !outcome) {
            return outcome;
        }
        bool same = false; // also when another clip of this export has taken the name
        Outcome outcome = IsSameClip(clip, onCard, m_comparer, same);
        return same || !outcome ? outcome : m_names.FindFree(clip.name, clip.newName);
    }

    std::string m_target;
    VerifiedCopier& m_comparer;
    ClipNames m_names;
    RenamedClips m_renamed;
};

Outcome CheckNames(const std::vector<CString>& names) {
    std::vector<std::wstring> folded;
    for (const CString& name : names) {
        folded.push_back(platform::FoldCase(name.View()));
    }
    std::sort(folded.begin(), folded.end());
    if (names.empty()) {
        return Failure("No clip was named for the export.");
    }
    return std::adjacent_find(folded.begin(), folded.end()) == folded.end()
               ? Outcome()
               : Failure("A clip was named twice for the export.");
}

/// Metadata files appear after everything else, so that no clip of the export shows before the
/// essence of all is there.
void PutMetadataLast(std::vector<TransferItem>& items) {
    std::stable_partition(items.begin(), items.end(),
                          [](const TransferItem& item) { return item.part != ClipPart::Metadata; });
}

/// Where the clips come from and go to.
struct Folders {
    std::string source; ///< CONTENTS
    std::string target; ///< root of the card
};

Outcome Plan(const ExportRequest& request, const Folders& folders, std::size_t blockSize,
             TransferWatch& watch, std::vector<TransferItem>& items) {
    std::vector<Traveller> clips;
    for (const CString& name : request.clipNames) {
        if (Outcome outcome = ReadTraveller(folders.source, name, clips.emplace_back()); !outcome) {
            return outcome;
        }
    }
    WatchBefore before(watch, clips);
    VerifiedCopier comparer(blockSize, 0, before);
    ExportPlan plan(FolderBelow(folders.target, "CONTENTS"), comparer);
    Outcome outcome = plan.ChooseNames(clips);
    for (std::size_t i = 0; outcome && i < clips.size(); ++i) {
        outcome = plan.AddItems(clips[i], items);
    }
    PutMetadataLast(items);
    return outcome;
}

} // namespace

Outcome ExportClips(const ExportRequest& request, std::size_t blockSize, TransferWatch& watch,
                    TransferSizes& sizes) {
    Folders folders;
    Outcome outcome = CheckNames(request.clipNames);
    if (outcome) {
        outcome = ResolveRoot(request.cardRoot, folders.target);
    }
    if (outcome) {
        outcome = FindContents(request.source, folders.source);
    }
    if (outcome && !platform::PathExists(folders.target)) {
        outcome = Failure("There is no card at " + folders.target + ".");
    }
    std::vector<TransferItem> items;
    if (outcome) {
        outcome = Plan(request, folders, blockSize, watch, items);
    }
    return outcome ? RunTransfer(folders.target, items, blockSize, watch, sizes) : outcome;
}

} // namespace nqp2::worker
