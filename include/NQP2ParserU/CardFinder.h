// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/ScanReport.h"

#include <cstdint>

namespace nqp2 {

/// What a folder holds that makes it a card. A set of kinds is their sum.
enum class CardKind : std::uint32_t {
    P2 = 1,     ///< read by CNQP2Parser::LoadClipEx
    Avchd = 2,  ///< an AVCHD card or disc; read by CNQP2Parser::LoadAVCHDClip, as is
    Camera = 4, ///< a folder of camera files
};
///@{
/// Sets of CardKind for FindCard.
inline constexpr std::uint32_t kP2Cards = 1;
inline constexpr std::uint32_t kAvchdCards = 2;
inline constexpr std::uint32_t kEveryCard = 7;
///@}

/// A card that was found.
struct FoundCard {
    CString root;                 ///< interface path, as scans take it
    CardKind kind = CardKind::P2; ///< which reader takes it
    bool entered = false;         ///< whether `root` is another folder than the one that was given

    ///@{
    /// Of the folder that makes it a card: the same for the same card, however it was reached.
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    ///@}
    /// The serial number of the volume whose top the card is, as the system's names of volumes tell
    /// it (FAT: "1A2B-3C4D"). "" when they do not, and for a copy that is a folder among others.
    CString serialNo;
    CString label; ///< that volume's name, "" as above
};

/// What a search has found, and which folders it could not look into.
struct CardSearch {
    CArray<FoundCard> cards; ///< in the order of their paths

    /// Folders that could not be looked into, and where a limit ended the search.
    CArray<SkippedFile> skipped;
};

/// How far a search goes.
struct CardSearchLimits {
    std::int32_t depth = 8;        ///< folders below the one that is searched
    std::int32_t folders = 20'000; ///< that are looked into in all
};

/// The cards that a folder leads to: the folder itself when it is a card; else the card that it is
/// a part of (CONTENTS, CONTENTS/CLIP, AVCHD, BDMV/STREAM ...); else those one folder below, by
/// their paths, such as PRIVATE on a memory card. More than one says that the folder leads to none
/// for certain. `kinds` says which count. False, with nothing found, when there is no memory.
NQP2_API bool FindCard(const CString& folder, CardSearch& found,
                       std::uint32_t kinds = kEveryCard) noexcept;

/// Appends every card in a folder and below it, by their paths, each once; a root that is a P2 card
/// and another comes twice. Links are not followed; cards in other folders of a card are
/// found too. What could not be looked into, and where a limit ended the search, is skipped. False
/// when there is no memory.
NQP2_API bool FindCards(const CString& folder, CardSearch& found,
                        const CardSearchLimits& limits = {}) noexcept;

} // namespace nqp2
