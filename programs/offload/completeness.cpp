// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/completeness.h"

#include "avchd/clip_source.h"
#include "avchd/playlist.h"
#include "media/card_layout.h"
#include "NQP2ParserU/ClipFiles.h"
#include "NQP2ParserU/JoinedTakes.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/TextBytes.h"
#include "platform/case_fold.h"
#include "platform/unicode.h"

#include <fmt/core.h>

#include <array>
#include <cstddef>
#include <new>
#include <set>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace nqp2::offload {
namespace {

constexpr std::array<const char*, 4> kGapWords = {"clip", "take", "edit list", "unread"};

constexpr std::array<const char*, 4> kStates = {"", "is missing", "is empty", "is too short"};

/// "SMP24E0001" as the end of a sentence about what is elsewhere.
std::string OnCard(const CString& serial) {
    return serial.IsEmpty() ? "" : fmt::format(" (it is on the card {})", BytesFromText(serial));
}

class Check {
public:
    explicit Check(const GivenFolder& given) : m_given(given) {}

    Completeness Run() {
        CArray<ScannedCard> scanned;
        for (const CardContents& card : m_given.cards) {
            scanned.Add({&card.clips, &card.report});
            CheckClips(card);
            NoteClips(card);
            TellUnread(card.report.skipped);
            TellUnread(card.listReport.skipped);
        }
        TellUnread(m_given.skipped);
        CheckTakes(scanned);
        for (const CardContents& card : m_given.cards) {
            CheckLists(card);
            CheckPlaylists(card);
        }
        return std::move(m_result);
    }

private:
    void Tell(Gap::Of of, std::string name, std::string problem) {
        m_result.gaps.push_back({of, std::move(name), std::move(problem)});
    }

    void CheckClips(const CardContents& card) {
        ClipFileReader reader(card.card.root);
        CArray<ClipFile> files;
        for (const _tag_P2Clip& clip : card.clips) {
            ++m_result.clips;
            if (!reader.Read(clip, files)) {
                throw std::bad_alloc();
            }
            for (const ClipFile& file : files) {
                CArray<ClipFile> alone;
                alone.Add(file);
                if (!IsWhole(alone)) {
                    Tell(Gap::Of::Clip, BytesFromText(clip.ClipName),
                         fmt::format("{} {}", PosixPath(file.path),
                                     kStates.at(static_cast<std::size_t>(file.state))));
                }
            }
        }
    }

    void NoteClips(const CardContents& card) {
        for (const _tag_P2Clip& clip : card.clips) {
            m_identifiers.insert(platform::FoldCase(clip.GlobalClipID.View()));
            m_names.insert(platform::FoldCase(clip.ClipName.View()));
        }
    }

    /// What could not be read is not known to be complete.
    void TellUnread(const CArray<SkippedFile>& skipped) {
        for (const SkippedFile& file : skipped) {
            // What systems leave beside files is no loss. Whoever describes camera files is not
            // asked here: they are whole by themselves.
            if (file.reason != SkipReason::Companion && file.reason != SkipReason::NotDescribed) {
                Tell(Gap::Of::Unread, PosixPath(file.path), BytesFromText(file.text));
            }
        }
    }

    void CheckTakes(const CArray<ScannedCard>& scanned) {
        CArray<JoinedTake> takes;
        if (!JoinTakes(scanned, takes)) {
            throw std::bad_alloc();
        }
        for (const JoinedTake& take : takes) {
            ++m_result.takes;
            for (const MissingSegment& segment : take.missing) {
                const std::string name = segment.clipName.IsEmpty()
                                             ? std::string("a segment")
                                             : "segment " + BytesFromText(segment.clipName);
                Tell(Gap::Of::Take,
                     take.segments.IsEmpty() ? "" : BytesFromText(take.segments[0].clipName),
                     name + " is missing" + OnCard(segment.serialNo));
            }
        }
    }

    /// The identifier counts, which copies keep; without one the name.
    [[nodiscard]] bool HasSource(const tag_P2EDLClipTrackEvent& event) const {
        return event.GlobalClipID.IsEmpty()
                   ? m_names.contains(platform::FoldCase(event.ClipName.View()))
                   : m_identifiers.contains(platform::FoldCase(event.GlobalClipID.View()));
    }

    void CheckLists(const CardContents& card) {
        for (const tag_P2EDL& list : card.lists) {
            ++m_result.editLists;
            std::set<std::string> told;
            for (const tag_P2EDLClipTrackEvent& event : list.Events) {
                const std::string clip =
                    BytesFromText(event.ClipName.IsEmpty() ? event.GlobalClipID : event.ClipName);
                if (!HasSource(event) && told.insert(clip).second) {
                    Tell(Gap::Of::EditList, BytesFromText(list.Name),
                         fmt::format("its clip {} is not there{}", clip, OnCard(event.P2SerialNo)));
                }
            }
        }
    }

    /// Records of playlists leave out the items whose clips are missing: the files are asked.
    void CheckPlaylists(const CardContents& card) {
        if (card.card.kind == CardKind::P2) {
            return;
        }
        const platform::Place root(media::WithDrive(card.card.root));
        const avchd::ClipSource source(avchd::ClipsFolder(root));
        for (const avchd::CardKind* kind : {&avchd::kAvchdCard, &avchd::kDisc}) {
            CheckPlaylists(source, *kind);
        }
    }

    void CheckPlaylists(const avchd::ClipSource& source, const avchd::CardKind& kind) {
        platform::IoStatus status;
        const CString pattern = CString(L"*") + kind.files.playlist.Text();
        for (const platform::FoundFile& file : source.Playlists().List(pattern, status)) {
            std::optional<avchd::Playlist> playlist;
            const bool isRead =
                file.IsReadable() && avchd::ReadPlaylistFile(file.posixPath, playlist) && playlist;
            ++m_result.editLists;
            if (!isRead) {
                Tell(Gap::Of::Unread, file.posixPath, "is no playlist that can be read");
                continue;
            }
            std::set<std::string_view> told;
            for (const avchd::PlayItem& item : playlist->items) {
                const CString name = TextFromBytes(item.Name());
                const bool isThere = source.Information().Has(name + kind.files.information.Text());
                if (!isThere && told.insert(item.Name()).second) {
                    Tell(Gap::Of::EditList, BytesFromText(file.title),
                         fmt::format("its clip {} is not there", item.Name()));
                }
            }
        }
    }

    const GivenFolder& m_given;
    Completeness m_result;
    std::unordered_set<std::wstring> m_identifiers; ///< folded, of all clips
    std::unordered_set<std::wstring> m_names;
};

} // namespace

const char* GapWord(Gap::Of of) {
    return kGapWords.at(static_cast<std::size_t>(of));
}

Completeness CheckCompleteness(const GivenFolder& given) {
    return Check(given).Run();
}

} // namespace nqp2::offload
