// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/ClipFileRecords.h"
#include "NQP2ParserU/CString.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Where every kind of file lies on a card and how it is named.
namespace nqp2::media {

/// A fixed name on a card, ASCII alone, in the forms in which code asks for it.
class CardName {
public:
    template <std::size_t Size>
    constexpr CardName(const char (&name)[Size]) { // NOLINT(google-explicit-constructor)
        static_assert(Size <= kSize);
        m_path[0] = L'\\';
        for (std::size_t i = 0; i + 1 < Size; ++i) {
            m_bytes[i] = name[i];
            m_text[i] = name[i] == '/' ? L'\\' : static_cast<wchar_t>(name[i]);
            m_path[i + 1] = m_text[i];
        }
        m_path[Size] = L'\\';
    }

    /// For the disk: "CONTENTS/CLIP".
    [[nodiscard]] constexpr const char* Bytes() const { return m_bytes.data(); }
    /// For interface paths: L"CONTENTS\\CLIP".
    [[nodiscard]] constexpr const wchar_t* Text() const { return m_text.data(); }
    /// Of a folder, to be put before what lies in it: L"CONTENTS\\CLIP\\".
    [[nodiscard]] constexpr const wchar_t* Path() const { return m_path.data() + 1; }
    /// Of a folder, to be put behind a drive and before what lies in it: L"\\CONTENTS\\CLIP\\".
    [[nodiscard]] constexpr const wchar_t* BelowDrive() const { return m_path.data(); }

private:
    static constexpr std::size_t kSize = 24;
    std::array<char, kSize> m_bytes{};
    std::array<wchar_t, kSize> m_text{};
    std::array<wchar_t, kSize + 2> m_path{};
};

/// The folder of a P2 card that holds all clips.
inline constexpr CardName kContents = "CONTENTS";

/// What a file of a clip counts as where bytes are told.
enum class ClipPart { Video, Audio, Other, Metadata };
inline constexpr std::size_t kClipParts = 4;

/// A kind of file that belongs to a clip: its folder below CONTENTS, and how it is named: after the
/// clip, a number of so many digits and the extension.
struct ClipFileKind {
    CardName folder;
    ClipPart part;
    std::size_t digits;
    CardName extension; ///< in upper case; "": any
    ClipFileRole role;
};

/// Each folder that holds files of clips; the metadata's is the last, for without it no clip shows.
inline constexpr std::array<ClipFileKind, 7> kClipFileKinds = {{
    {"VIDEO", ClipPart::Video, 0, ".MXF", ClipFileRole::Video},
    {"AVCLIP", ClipPart::Video, 0, ".MXF", ClipFileRole::Video},
    {"AUDIO", ClipPart::Audio, 2, ".MXF", ClipFileRole::Audio},
    {"ICON", ClipPart::Other, 0, ".BMP", ClipFileRole::Icon},
    {"PROXY", ClipPart::Other, 0, "", ClipFileRole::Proxy},
    {"VOICE", ClipPart::Other, 2, "", ClipFileRole::Voice},
    {"CLIP", ClipPart::Metadata, 0, ".XML", ClipFileRole::Metadata},
}};
inline constexpr const ClipFileKind& kVideoFiles = kClipFileKinds[0];
inline constexpr const ClipFileKind& kOneFileEssence = kClipFileKinds[1]; ///< picture and sound
inline constexpr const ClipFileKind& kAudioFiles = kClipFileKinds[2];     ///< one a channel
inline constexpr const ClipFileKind& kIconFiles = kClipFileKinds[3];
inline constexpr const ClipFileKind& kProxyFiles = kClipFileKinds[4];
inline constexpr const ClipFileKind& kVoiceFiles = kClipFileKinds[5]; ///< one a memo
inline constexpr const ClipFileKind& kMetadataFiles = kClipFileKinds[6];

inline constexpr CardName kMp4Proxy = ".MP4"; ///< the extensions of proxies
inline constexpr CardName kMovProxy = ".MOV";

/// What follows the clip's name in the name of a file: "00.MXF".
std::string SuffixOf(const ClipFileKind& kind, std::size_t number = 0);
/// The name of a clip's file: "0001AB00.MXF".
CString FileNameOf(const ClipFileKind& kind, const CString& clip, std::size_t number = 0);
/// The inverse: the clip's name in a file name in upper case. Empty when the name is not of that
/// kind.
std::wstring_view ClipNameIn(std::wstring_view file, const ClipFileKind& kind);
std::string_view ClipNameIn(std::string_view file, const ClipFileKind& kind);

/// How a file of that many bytes stands to the bytes that are promised of it, 0 for none.
ClipFileState StateOf(std::uint64_t size, std::uint64_t promised);

/// Edit lists lie below a card's root, where hosts look for them, or where the cards keep them.
inline constexpr CardName kEditLists = "EDITLIST";
inline constexpr CardName kContentsEditLists = "CONTENTS/EDITLIST";
/// The picture of an edit list, in a folder with the list's name.
inline constexpr CardName kEditListIcon = "ICON.BMP";

/// Where hosts keep what they note, the list of what was taken in among it.
inline constexpr CardName kUserData = "USERDATA";
inline constexpr CardName kIngestList = "Ingest.xml";

/// AVCHD cards, then discs, and the folders in both.
inline constexpr CardName kAvchd = "AVCHD/BDMV";
inline constexpr CardName kDisc = "BDMV";
inline constexpr CardName kClipInformation = "CLIPINF";
inline constexpr CardName kStreams = "STREAM";
inline constexpr CardName kPlaylists = "PLAYLIST";

/// The extensions in these folders: of 8.3 names on AVCHD cards, of long ones on discs.
struct AvchdExtensions {
    CardName information;
    CardName stream;
    CardName playlist;
};
inline constexpr AvchdExtensions kAvchdExtensions = {".CPI", ".MTS", ".MPL"};
inline constexpr AvchdExtensions kDiscExtensions = {".clpi", ".m2ts", ".mpls"};

/// Folders in which cameras keep plain files, and those files as a pattern. A group's folders are
/// asked for in this order; only the first that exists counts.
struct CameraFolder {
    CardName known; ///< the folder that tells such a card
    CardName files; ///< the folder that is listed
    CardName pattern;
};
inline constexpr CameraFolder kSonyCamera = {"SONY", "SONY/DVF/100DVF", "*.AVI"};
inline constexpr std::array<CameraFolder, 2> kPanasonicCameras = {{
    {"PANA_GRP/001RBQAM", "PANA_GRP/001RBQAM", "*.MOV"},
    {"PANA_GRP/001YDJAM", "PANA_GRP/001YDJAM", "*.MOV"},
}};

/// Where a memory card keeps what is none of its pictures, AVCHD and camera folders among it.
inline constexpr CardName kPrivate = "PRIVATE";

/// The metadata files of clips and edit lists.
inline constexpr const wchar_t* kMetadataPattern = L"*.XML";

/// The root with a drive part: ":" is appended when the text holds none ("E" becomes "E:").
CString WithDrive(const CString& root);

/// root + "\CONTENTS\".
CString ContentsFolder(const CString& root);

/// The contents folder above a clip's file: its interface path without the last two components.
CString ContentsAbove(const CString& path);
/// The name of the file at an interface path without its extension.
CString TitleOf(const CString& path);

/// Of every file system that holds a card or its copy.
inline constexpr std::size_t kLongestFileName = 255;

/// Whether a name taken from a file is one plain file name: no separators, no drive, no zero, and
/// no longer than file names can be.
bool IsPlainName(const CString& name);

/// Whether an interface path is that of a file which a Mac leaves beside each copied file.
bool IsCompanion(const CString& path);

} // namespace nqp2::media
