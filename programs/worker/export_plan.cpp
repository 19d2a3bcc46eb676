// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/transfer.h"

#include "NQP2ParserU/XmlLimits.h"
#include "platform/case_fold.h"
#include "platform/unicode.h"
#include "worker/base/card_folder.h"
#include "worker/clip_names.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>

namespace nqp2::worker {
namespace {

using platform::Folder;
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

    void Open() {
        const IoStatus status = OpenBelow(m_root, media::kContents.Bytes(), m_contents);
        if (status.error != platform::IoError::NotFound) {
            copy::Require(status, "open",
                          platform::PathIn(m_root.Path(), media::kContents.Bytes()));
        }
    }
    [[nodiscard]] ListFolder Lister() const { return ListInFolder(m_contents.get()); }

    [[nodiscard]] std::vector<OnCard> Find(const std::vector<CString>& names) const {
        std::vector<std::vector<ClipFile>> files = FindClipFiles(Lister(), names);
        std::vector<OnCard> found;
        for (std::size_t i = 0; i < names.size(); ++i) {
            found.push_back({names[i], std::move(files[i])});
        }
        return found;
    }

    IoStatus TryRead(const ClipFile& file, std::string& content) const {
        std::unique_ptr<Folder> folder;
        const IoStatus status = m_contents->OpenFolder(file.placed, folder);
        return status ? folder->Read(file.name, MaxXmlFileSize(), content) : status;
    }
    [[nodiscard]] std::string Read(const ClipFile& file) const {
        std::string content;
        copy::Require(TryRead(file, content), "read", PathOf(file));
        return content;
    }
    [[nodiscard]] std::unique_ptr<platform::FileReader> Open(const ClipFile& file) const {
        std::unique_ptr<Folder> folder;
        std::unique_ptr<platform::FileReader> reader;
        IoStatus status = m_contents->OpenFolder(file.placed, folder);
        if (status) {
            status = folder->Open(file.name, reader);
        }
        copy::Require(status, "read", PathOf(file));
        return reader;
    }
    [[nodiscard]] std::string PathOf(const ClipFile& file) const {
        return platform::PathIn(platform::PathIn(m_contents->Path(), file.placed), file.name);
    }

    /// Whether a clip of that name has arrived by now: its metadata come last.
    [[nodiscard]] bool HasArrived(const CString& name) const {
        std::unique_ptr<Folder> clips;
        std::string found;
        const std::string folder =
            platform::PathIn(media::kContents.Bytes(), media::kMetadataFiles.folder.Bytes());
        return OpenBelow(m_root, folder, clips) && FindIn(*clips, MetadataName(name), found);
    }

    /// The names of all clips on the card by their identifiers.
    [[nodiscard]] std::multimap<std::wstring, CString> ReadIdentifiers() const;

private:
    Folder& m_root;
    std::unique_ptr<Folder> m_contents;
};

std::multimap<std::wstring, CString> Card::ReadIdentifiers() const {
    const media::ClipFileKind& kind = media::kMetadataFiles;
    const auto [placed, entries] = Lister()(kind.folder.Bytes());
    std::multimap<std::wstring, CString> clips;
    for (const platform::FolderEntry& entry : entries) {
        const CString file = platform::TextFromNameBytes(entry.name);
        const std::wstring folded = platform::FoldCase(file.View());
        const std::size_t length = media::ClipNameIn(folded, kind).size();
        std::string xml;
        // What cannot be read is no copy of anything.
        if (length == 0 || entry.kind != platform::EntryKind::File ||
            !TryRead({kind.part, kind.folder.Bytes(), "", placed, entry.name}, xml)) {
            continue;
        }
        const std::optional<ClipFacts> facts = ReadFacts(xml);
        if (facts && !facts->identifier.empty()) {
            clips.emplace(KeyOf(platform::TextFromUtf8(facts->identifier)),
                          file.Left(static_cast<int>(length)));
        }
    }
    return clips;
}

class Plan {
public:
    Plan(copy::Transaction& transaction, const std::vector<SourceClip>& clips, copy::Copier& copier)
        : m_transaction(transaction), m_copier(copier), m_card(transaction) {
        for (const SourceClip& clip : clips) {
            m_clips.emplace_back().clip = &clip;
        }
    }

    void Make();
    [[nodiscard]] std::vector<copy::Item> List(TransferSizes& sizes) const;

private:
    void ReadCard();
    bool Locate(Traveller& clip, const OnCard& place);
    bool LocateElsewhere(Traveller& clip);
    bool HasSameFiles(const SourceClip& clip, const OnCard& place);
    void LocateAll();
    void ChooseNames();
    void ChooseFreeName(Traveller& clip);
    void Rename();
    void RenameTakesThatDiffer();
    void GroupTakes();
    std::size_t TakeOf(std::size_t clip);

    copy::Transaction& m_transaction;
    copy::Copier& m_copier;
    Card m_card;
    ClipNames m_names;
    std::vector<OnCard> m_ownNames; ///< what the card holds under the clips' own names
    std::optional<std::multimap<std::wstring, CString>> m_byIdentifier; ///< once it is needed
    std::vector<Traveller> m_clips;
};

/// Whether every file of the place but the metadata is one of the clip's, byte for byte.
bool Plan::HasSameFiles(const SourceClip& clip, const OnCard& place) {
    for (const ClipFile& file : place.files) {
        const SourceFile* const own = Counterpart(clip, file);
        if (own == nullptr || file.kind != platform::EntryKind::File) {
            return false;
        }
        if (file.part == ClipPart::Metadata) {
            continue;
        }
        const std::unique_ptr<platform::FileReader> reader = m_card.Open(file);
        if (reader->Size() != own->info.size ||
            !m_copier.IsSame(ItemFor(*own).source, m_card.PathOf(file), *reader)) {
            return false;
        }
    }
    return true;
}

/// Whether the metadata are those of the clip, perhaps under other names.
bool IsOfClip(const SourceClip& clip, const std::string& xml) {
    const std::string& own = clip.facts.identifier;
    if (xml == clip.xml || own.empty()) {
        return xml == clip.xml;
    }
    const std::optional<ClipFacts> facts = ReadFacts(xml);
    return facts && !facts->identifier.empty() && MayBeSame(facts->identifier, own);
}

/// Whether what is there is this very clip or a part of it, left by an export that was repeated or
/// interrupted.
bool Plan::Locate(Traveller& clip, const OnCard& place) {
    std::string xml;
    if (!place.files.empty() && place.files.back().part == ClipPart::Metadata) {
        const ClipFile& metadata = place.files.back();
        if (metadata.kind != platform::EntryKind::File) {
            return false;
        }
        xml = m_card.Read(metadata);
        if (!IsOfClip(*clip.clip, xml)) {
            return false;
        }
    }
    if (!HasSameFiles(*clip.clip, place)) {
        return false;
    }
    clip.newName = place.name;
    clip.there = place;
    clip.xmlThere = std::move(xml);
    return true;
}

/// Looks for the clip under other names, which an export gave it that found its own taken.
bool Plan::LocateElsewhere(Traveller& clip) {
    const std::string& identifier = clip.clip->facts.identifier;
    if (identifier.empty()) {
        return false;
    }
    if (!m_byIdentifier) {
        m_byIdentifier = m_card.ReadIdentifiers();
    }
    std::vector<CString> names;
    const auto [first, last] =
        m_byIdentifier->equal_range(KeyOf(platform::TextFromUtf8(identifier)));
    for (auto each = first; each != last; ++each) {
        names.push_back(each->second);
    }
    const std::vector<OnCard> places = names.empty() ? std::vector<OnCard>() : m_card.Find(names);
    return std::any_of(places.begin(), places.end(),
                       [&](const OnCard& place) { return Locate(clip, place); });
}

void Plan::ReadCard() {
    std::vector<CString> names;
    for (const Traveller& clip : m_clips) {
        names.push_back(clip.clip->name);
        m_transaction.Reserve(Shown(clip.clip->name));
    }
    m_card.Open();
    m_names.Read(m_card.Lister());
    m_ownNames = m_card.Find(names);
}

void Plan::LocateAll() {
    for (std::size_t i = 0; i < m_clips.size(); ++i) {
        Traveller& clip = m_clips[i];
        if (m_names.IsTaken(clip.clip->name) && !Locate(clip, m_ownNames[i])) {
            LocateElsewhere(clip);
        }
    }
}

void Plan::ChooseFreeName(Traveller& clip) {
    bool isFree = false;
    while (!isFree) {
        clip.newName = m_names.FindFree(clip.clip->name);
        // Another transfer may have finished since the names were read.
        isFree = m_transaction.TryReserve(Shown(clip.newName)) && !m_card.HasArrived(clip.newName);
        m_names.Take(clip.newName);
    }
}

/// All that can keep their names do, before others get new ones.
void Plan::ChooseNames() {
    for (Traveller& clip : m_clips) {
        if (clip.newName.IsEmpty() && !m_names.IsTaken(clip.clip->name)) {
            clip.newName = clip.clip->name;
            m_names.Take(clip.newName);
        }
    }
    for (Traveller& clip : m_clips) {
        if (clip.newName.IsEmpty()) {
            ChooseFreeName(clip);
        }
    }
    Rename();
}

/// Writes the names as they are chosen into all metadata.
void Plan::Rename() {
    RenamedClips renamed;
    for (const Traveller& clip : m_clips) {
        if (clip.newName != clip.clip->name) {
            renamed[KeyOf(clip.clip->name)] = {clip.newName, clip.clip->facts.identifier};
        }
    }
    for (Traveller& clip : m_clips) {
        const SourceClip& source = *clip.clip;
        clip.xml = renamed.empty() ? source.xml
                                   : RenameInMetadata(source.xml, source.files.back().path,
                                                      source.name, renamed);
    }
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
void Plan::RenameTakesThatDiffer() {
    GroupTakes();
    for (;;) {
        std::set<std::size_t> differing;
        for (std::size_t i = 0; i < m_clips.size(); ++i) {
            if (m_clips[i].IsThere() && m_clips[i].xmlThere != m_clips[i].xml) {
                differing.insert(TakeOf(i));
            }
        }
        if (differing.empty()) {
            return;
        }
        for (std::size_t i = 0; i < m_clips.size(); ++i) {
            if (!m_clips[i].IsThere() || differing.count(TakeOf(i)) == 0) {
                continue;
            }
            m_clips[i].there = {};
            m_clips[i].xmlThere.clear();
            ChooseFreeName(m_clips[i]);
        }
        Rename();
    }
}

void Plan::Make() {
    ReadCard();
    LocateAll();
    ChooseNames();
    RenameTakesThatDiffer();
}

std::vector<copy::Item> Plan::List(TransferSizes& sizes) const {
    std::vector<copy::Item> items;
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
    return items;
}

} // namespace

std::vector<copy::Item> PlanExport(copy::Transaction& transaction,
                                   const std::vector<SourceClip>& clips, copy::Copier& copier,
                                   TransferSizes& sizes) {
    Plan plan(transaction, clips, copier);
    plan.Make();
    return plan.List(sizes);
}

} // namespace nqp2::worker
