// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/export_plan.h"

#include "NQP2ParserU/XmlLimits.h"
#include "platform/case_fold.h"
#include "platform/unicode.h"
#include "worker/card_folder.h"
#include "worker/free_clip_name.h"

#include <algorithm>
#include <map>
#include <set>

namespace nqp2::worker {
namespace {

using platform::Folder;
using platform::IoError;
using platform::IoStatus;

std::wstring KeyOf(const CString& name) {
    return platform::FoldCase(name.View());
}

/// What the card holds under one name.
struct OnCard {
    CString name;
    std::vector<ClipFile> files;
};

/// A clip on its way to the card.
struct Traveller {
    const SourceClip* clip = nullptr;
    CString newName;
    OnCard there;         ///< what the card holds of it already, under its new name
    std::string xmlThere; ///< its metadata on the card; "" when these are missing
    std::string xml;      ///< its metadata under the new names
    std::size_t take = 0; ///< number of another clip of its take, or its own

    /// Whether the card shows it already.
    [[nodiscard]] bool IsThere() const { return !xmlThere.empty(); }
};

const SourceFile* Counterpart(const SourceClip& clip, const ClipFile& onCard) {
    const auto own = std::find_if(clip.files.begin(), clip.files.end(),
                                  [&](const auto& each) { return HaveSameRole(each, onCard); });
    return own != clip.files.end() ? &*own : nullptr;
}

/// Reads what is on the card.
class Card {
public:
    explicit Card(copy::Transaction& transaction) : m_root(transaction.Root()) {}

    Outcome Open() {
        const IoStatus status = OpenBelow(m_root, "CONTENTS", m_contents);
        return status || status.error == IoError::NotFound
                   ? Outcome()
                   : Failure("open", m_root.Path() + "/CONTENTS", status);
    }
    [[nodiscard]] ListFolder Lister() const { return ListInFolder(m_contents.get()); }

    Outcome Find(const std::vector<CString>& names, std::vector<OnCard>& found) const {
        std::vector<std::vector<ClipFile>> files;
        Outcome outcome = FindClipFiles(Lister(), names, files);
        for (std::size_t i = 0; outcome && i < names.size(); ++i) {
            found.push_back({names[i], std::move(files[i])});
        }
        return outcome;
    }

    Outcome Read(const ClipFile& file, std::string& content) const {
        std::unique_ptr<Folder> folder;
        IoStatus status = m_contents->OpenFolder(file.placed, folder);
        if (status) {
            status = folder->Read(file.name, MaxXmlFileSize(), content);
        }
        return status ? Outcome() : Failure("read", PathOf(file), status);
    }
    Outcome Open(const ClipFile& file, std::unique_ptr<platform::FileReader>& reader) const {
        std::unique_ptr<Folder> folder;
        IoStatus status = m_contents->OpenFolder(file.placed, folder);
        if (status) {
            status = folder->Open(file.name, reader);
        }
        return status ? Outcome() : Failure("read", PathOf(file), status);
    }
    [[nodiscard]] std::string PathOf(const ClipFile& file) const {
        return m_contents->Path() + "/" + file.placed + "/" + file.name;
    }

    /// Whether a clip of that name has arrived by now: its metadata come last.
    [[nodiscard]] bool HasArrived(const CString& name) const {
        std::unique_ptr<Folder> clips;
        std::string found;
        return OpenBelow(m_root, "CONTENTS/CLIP", clips) &&
               FindIn(*clips, platform::NameBytesFromText(name.View()) + ".XML", found);
    }

    /// The names of all clips on the card by their identifiers.
    Outcome ReadIdentifiers(std::multimap<std::wstring, CString>& clips) const;

private:
    Folder& m_root;
    std::unique_ptr<Folder> m_contents;
};

Outcome Card::ReadIdentifiers(std::multimap<std::wstring, CString>& clips) const {
    const media::ClipFileKind& kind = media::kMetadataFiles;
    std::string placed;
    std::vector<platform::FolderEntry> entries;
    if (const IoStatus status = Lister()(kind.folder.Bytes(), placed, entries); !status) {
        return status.error == IoError::NotFound ? Outcome()
                                                 : Failure("read the folder", placed, status);
    }
    for (const platform::FolderEntry& entry : entries) {
        const CString file = platform::TextFromNameBytes(entry.name);
        const std::wstring folded = platform::FoldCase(file.View());
        const std::size_t length = media::ClipNameIn(folded, kind).size();
        std::string xml;
        ClipFacts facts;
        // What cannot be read is no copy of anything.
        if (length != 0 && entry.kind == platform::EntryKind::File &&
            Read({kind.part, kind.folder.Bytes(), "", placed, entry.name}, xml) &&
            ReadFacts(xml, entry.name, facts) && !facts.identifier.empty()) {
            clips.emplace(KeyOf(platform::TextFromUtf8(facts.identifier)),
                          file.Left(static_cast<int>(length)));
        }
    }
    return {};
}

class Plan {
public:
    Plan(copy::Transaction& transaction, const std::vector<SourceClip>& clips, copy::Copier& copier)
        : m_transaction(transaction), m_copier(copier), m_card(transaction) {
        for (const SourceClip& clip : clips) {
            m_clips.emplace_back().clip = &clip;
        }
    }

    Outcome Make();
    void List(std::vector<copy::Item>& items, TransferSizes& sizes) const;

private:
    Outcome ReadCard();
    Outcome Locate(Traveller& clip, const OnCard& place, bool& isThere);
    Outcome LocateElsewhere(Traveller& clip, bool& isThere);
    Outcome HasSameFiles(const SourceClip& clip, const OnCard& place, bool& same);
    Outcome LocateAll();
    Outcome ChooseNames();
    Outcome ChooseFreeName(Traveller& clip);
    Outcome Rename();
    Outcome RenameTakesThatDiffer();
    void GroupTakes();
    std::size_t TakeOf(std::size_t clip);

    copy::Transaction& m_transaction;
    copy::Copier& m_copier;
    Card m_card;
    ClipNames m_names;
    std::vector<OnCard> m_ownNames; ///< what the card holds under the clips' own names
    std::multimap<std::wstring, CString> m_byIdentifier;
    bool m_knowsIdentifiers = false;
    std::vector<Traveller> m_clips;
};

/// Whether every file of the place but the metadata is one of the clip's, byte for byte.
Outcome Plan::HasSameFiles(const SourceClip& clip, const OnCard& place, bool& same) {
    same = true;
    for (std::size_t i = 0; same && i < place.files.size(); ++i) {
        const ClipFile& file = place.files[i];
        const SourceFile* const own = Counterpart(clip, file);
        same = own != nullptr && file.kind == platform::EntryKind::File;
        if (!same || file.part == ClipPart::Metadata) {
            continue;
        }
        std::unique_ptr<platform::FileReader> reader;
        if (Outcome outcome = m_card.Open(file, reader); !outcome) {
            return outcome;
        }
        same = reader->Size() == own->info.size;
        Outcome outcome =
            same ? m_copier.Compare(ItemFor(*own).source, m_card.PathOf(file), *reader, same)
                 : Outcome();
        if (!outcome) {
            return outcome;
        }
    }
    return {};
}

/// Whether what is there is this very clip or a part of it, left by an export that was repeated or
/// interrupted.
Outcome Plan::Locate(Traveller& clip, const OnCard& place, bool& isThere) {
    isThere = false;
    std::string xml;
    if (!place.files.empty() && place.files.back().part == ClipPart::Metadata) {
        const ClipFile& metadata = place.files.back();
        if (metadata.kind != platform::EntryKind::File) {
            return {};
        }
        if (Outcome outcome = m_card.Read(metadata, xml); !outcome) {
            return outcome;
        }
        ClipFacts facts;
        const std::string& own = clip.clip->facts.identifier;
        const bool isIts = xml == clip.clip->xml ||
                           (!own.empty() && ReadFacts(xml, metadata.name, facts) &&
                            !facts.identifier.empty() && MayBeSame(facts.identifier, own));
        if (!isIts) {
            return {};
        }
    }
    Outcome outcome = HasSameFiles(*clip.clip, place, isThere);
    if (isThere) {
        clip.newName = place.name;
        clip.there = place;
        clip.xmlThere = std::move(xml);
    }
    return outcome;
}

/// Looks for the clip under other names, which an export gave it that found its own taken.
Outcome Plan::LocateElsewhere(Traveller& clip, bool& isThere) {
    isThere = false;
    const std::string& identifier = clip.clip->facts.identifier;
    if (identifier.empty()) {
        return {};
    }
    if (!m_knowsIdentifiers) {
        m_knowsIdentifiers = true;
        if (Outcome outcome = m_card.ReadIdentifiers(m_byIdentifier); !outcome) {
            return outcome;
        }
    }
    std::vector<CString> names;
    const auto [first, last] =
        m_byIdentifier.equal_range(KeyOf(platform::TextFromUtf8(identifier)));
    for (auto each = first; each != last; ++each) {
        names.push_back(each->second);
    }
    std::vector<OnCard> places;
    Outcome outcome = names.empty() ? Outcome() : m_card.Find(names, places);
    for (std::size_t i = 0; outcome && !isThere && i < places.size(); ++i) {
        outcome = Locate(clip, places[i], isThere);
    }
    return outcome;
}

Outcome Plan::ReadCard() {
    std::vector<CString> names;
    for (const Traveller& clip : m_clips) {
        names.push_back(clip.clip->name);
        if (Outcome outcome = m_transaction.Reserve(Shown(clip.clip->name)); !outcome) {
            return outcome;
        }
    }
    Outcome outcome = m_card.Open();
    if (outcome) {
        outcome = m_names.Read(m_card.Lister());
    }
    return outcome ? m_card.Find(names, m_ownNames) : outcome;
}

Outcome Plan::LocateAll() {
    for (std::size_t i = 0; i < m_clips.size(); ++i) {
        Traveller& clip = m_clips[i];
        if (!m_names.IsTaken(clip.clip->name)) {
            continue;
        }
        bool isThere = false;
        Outcome outcome = Locate(clip, m_ownNames[i], isThere);
        if (outcome && !isThere) {
            outcome = LocateElsewhere(clip, isThere);
        }
        if (!outcome) {
            return outcome;
        }
    }
    return {};
}

Outcome Plan::ChooseFreeName(Traveller& clip) {
    bool isTaken = true;
    while (isTaken) {
        Outcome outcome = m_names.FindFree(clip.clip->name, clip.newName);
        if (outcome) {
            outcome = m_transaction.TryReserve(Shown(clip.newName), isTaken);
        }
        // Another transfer may have finished since the names were read.
        isTaken = isTaken || m_card.HasArrived(clip.newName);
        if (!outcome) {
            return outcome;
        }
        m_names.Take(clip.newName);
    }
    return {};
}

/// All that can keep their names do, before others get new ones.
Outcome Plan::ChooseNames() {
    for (Traveller& clip : m_clips) {
        if (clip.newName.IsEmpty() && !m_names.IsTaken(clip.clip->name)) {
            clip.newName = clip.clip->name;
            m_names.Take(clip.newName);
        }
    }
    Outcome outcome;
    for (std::size_t i = 0; outcome && i < m_clips.size(); ++i) {
        outcome = m_clips[i].newName.IsEmpty() ? ChooseFreeName(m_clips[i]) : Outcome();
    }
    return outcome ? Rename() : outcome;
}

/// Writes the names as they are chosen into all metadata.
Outcome Plan::Rename() {
    RenamedClips renamed;
    for (const Traveller& clip : m_clips) {
        if (clip.newName != clip.clip->name) {
            renamed[KeyOf(clip.clip->name)] = {clip.newName, clip.clip->facts.identifier};
        }
    }
    for (Traveller& clip : m_clips) {
        const SourceClip& source = *clip.clip;
        clip.xml = source.xml;
        if (renamed.empty()) {
            continue;
        }
        bool changed = false;
        Outcome outcome = RenameInMetadata(source.xml, source.files.back().path, source.name,
                                           renamed, clip.xml, changed);
        if (!outcome) {
            return outcome;
        }
    }
    return {};
}

std::size_t Plan::TakeOf(std::size_t clip) {
    while (m_clips[clip].take != clip) {
        clip = m_clips[clip].take = m_clips[m_clips[clip].take].take;
    }
    return clip;
}

/// Joins the clips that belong to one take, as far as they are part of this export.
void Plan::GroupTakes() {
    std::map<std::wstring, std::size_t> byName;
    for (std::size_t i = 0; i < m_clips.size(); ++i) {
        m_clips[i].take = i;
        byName[KeyOf(m_clips[i].clip->name)] = i;
    }
    for (std::size_t i = 0; i < m_clips.size(); ++i) {
        for (const NamedClip& related : m_clips[i].clip->facts.related) {
            const auto other = byName.find(KeyOf(related.name));
            if (other != byName.end() &&
                MayBeSame(related.identifier, m_clips[other->second].clip->facts.identifier)) {
                m_clips[TakeOf(i)].take = TakeOf(other->second);
            }
        }
    }
}

/// What the card holds is not changed: where it names other clips than it would have to, the take
/// comes once more under names of its own.
Outcome Plan::RenameTakesThatDiffer() {
    GroupTakes();
    for (;;) {
        std::set<std::size_t> differing;
        for (std::size_t i = 0; i < m_clips.size(); ++i) {
            if (m_clips[i].IsThere() && m_clips[i].xmlThere != m_clips[i].xml) {
                differing.insert(TakeOf(i));
            }
        }
        if (differing.empty()) {
            return {};
        }
        for (std::size_t i = 0; i < m_clips.size(); ++i) {
            if (!m_clips[i].IsThere() || differing.count(TakeOf(i)) == 0) {
                continue;
            }
            m_clips[i].there = {};
            m_clips[i].xmlThere.clear();
            if (Outcome outcome = ChooseFreeName(m_clips[i]); !outcome) {
                return outcome;
            }
        }
        if (Outcome outcome = Rename(); !outcome) {
            return outcome;
        }
    }
}

Outcome Plan::Make() {
    Outcome outcome = ReadCard();
    if (outcome) {
        outcome = LocateAll();
    }
    if (outcome) {
        outcome = ChooseNames();
    }
    return outcome ? RenameTakesThatDiffer() : outcome;
}

void Plan::List(std::vector<copy::Item>& items, TransferSizes& sizes) const {
    std::vector<copy::Item> metadata;
    for (const Traveller& clip : m_clips) {
        const bool isRenamed = KeyOf(clip.newName) != KeyOf(clip.clip->name);
        const std::string name =
            isRenamed ? platform::NameBytesFromText(clip.newName.View()) : std::string();
        for (const SourceFile& file : clip.clip->files) {
            const bool isMetadata = file.part == ClipPart::Metadata;
            sizes.Count(file.part, isMetadata ? clip.xml.size() : file.info.size);
            const auto isIt = [&](const ClipFile& each) { return HaveSameRole(each, file); };
            if (std::any_of(clip.there.files.begin(), clip.there.files.end(), isIt)) {
                continue;
            }
            copy::Item item = ItemFor(file, name);
            if (isMetadata && clip.xml != clip.clip->xml) {
                item.source.size = clip.xml.size();
                item.source.content = clip.xml;
                item.source.time.reset();
            }
            (isMetadata ? metadata : items).push_back(std::move(item));
        }
    }
    std::move(metadata.begin(), metadata.end(), std::back_inserter(items));
}

} // namespace

Outcome PlanExport(copy::Transaction& transaction, std::vector<SourceClip>& clips,
                   copy::Copier& copier, std::vector<copy::Item>& items, TransferSizes& sizes) {
    Plan plan(transaction, clips, copier);
    Outcome outcome = plan.Make();
    if (outcome) {
        plan.List(items, sizes);
    }
    return outcome;
}

} // namespace nqp2::worker
