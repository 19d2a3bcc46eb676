// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/essence_lookup.h"

#include "platform/unicode.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace nqp2::clips {
namespace {

// Channels that the reader of a named clip looks for.
constexpr int kNamedChannels = 4;

std::uint64_t Bit(int number) {
    return std::uint64_t{1} << static_cast<unsigned>(number);
}

void MarkIfPresent(_tag_P2Clip& clip, const CString& path, int bit) {
    if (!path.IsEmpty()) {
        clip.EssenceMask |= Bit(bit);
    }
}

/// The files that belong to one name.
class ClipFiles {
public:
    ClipFiles(const EssenceLookup& essence, const CString& clip)
        : m_essence(essence), m_clip(clip), m_isPlain(media::IsPlainName(clip)),
          m_name(platform::NameBytesFromText(clip.View())), m_nameSize(m_name.size()) {}

    [[nodiscard]] bool HavePlainName() const { return m_isPlain; }

    /// The interface path of a file, made in one piece.
    [[nodiscard]] CString PathOf(const media::ClipFileKind& kind, std::string_view suffix) const {
        const std::wstring_view folder = m_essence.FolderOf(kind).Written().View();
        const std::wstring_view clip = m_clip.View();
        const std::size_t size = folder.size() + clip.size() + suffix.size();
        if (size > INT_MAX) {
            throw std::length_error("a path that no text can hold");
        }
        const int length = static_cast<int>(size);
        CString path;
        wchar_t* end = path.GetBuffer(length);
        end = std::copy(folder.begin(), folder.end(), end);
        end = std::copy(clip.begin(), clip.end(), end);
        std::copy(suffix.begin(), suffix.end(), end);
        path.ReleaseBuffer(length);
        return path;
    }
    /// The same when that file exists, else "". A name that is no plain file name is never looked
    /// for.
    [[nodiscard]] CString PathIfExists(const media::ClipFileKind& kind, std::string_view suffix) {
        return CanBe(suffix) && m_essence.Has(kind, FileName(suffix)) ? PathOf(kind, suffix)
                                                                      : CString();
    }
    [[nodiscard]] CString PathIfExists(const media::ClipFileKind& kind, std::size_t number = 0) {
        return PathIfExists(kind, media::SuffixOf(kind, number));
    }
    /// Whether `path` is what PathIfExists gives for a file that is known to exist.
    [[nodiscard]] bool IsPathOf(const CString& path, const media::ClipFileKind& kind) const {
        const std::wstring_view folder = m_essence.FolderOf(kind).Written().View();
        const std::string suffix = media::SuffixOf(kind);
        std::wstring_view rest = path.View();
        if (!CanBe(suffix) || !rest.starts_with(folder)) {
            return false;
        }
        rest.remove_prefix(folder.size());
        return rest.starts_with(m_clip.View()) &&
               std::equal(rest.begin() + m_clip.GetLength(), rest.end(), suffix.begin(),
                          suffix.end());
    }

private:
    [[nodiscard]] bool CanBe(std::string_view suffix) const {
        return m_isPlain && m_clip.View().size() + suffix.size() <= media::kLongestFileName;
    }
    const std::string& FileName(std::string_view suffix) {
        m_name.resize(m_nameSize);
        return m_name += suffix;
    }

    const EssenceLookup& m_essence;
    const CString& m_clip;
    bool m_isPlain;
    std::string m_name; ///< for the disk, and behind it the suffix that was last asked for
    std::size_t m_nameSize;
};

/// The files that both readers look for in the same way.
void FindCompanions(ClipFiles& files, _tag_P2Clip& clip) {
    P2Proxy& proxy = clip.Proxy;
    constexpr int kMov = 2;
    const bool isMov = proxy.ProxyFormat == kMov;
    proxy.ProxyExt = isMov ? media::kMovProxy.Text() : media::kMp4Proxy.Text();
    clip.ProxyPath = files.PathIfExists(media::kProxyFiles, media::kMp4Proxy.Bytes());
    proxy.ProxyFilePath =
        isMov ? files.PathIfExists(media::kProxyFiles, media::kMovProxy.Bytes()) : clip.ProxyPath;
    clip.IconPath = files.PathIfExists(media::kIconFiles);
    if (!files.IsPathOf(clip.XmlPath, media::kMetadataFiles)) {
        clip.XmlPath = files.PathIfExists(media::kMetadataFiles);
    }
}

/// Video and audio in one file.
void FindFamilyEssence(ClipFiles& files, int channels, _tag_P2Clip& clip) {
    clip.VideoPath = files.PathIfExists(media::kOneFileEssence);
    MarkIfPresent(clip, clip.VideoPath, 0);
    for (int channel = 0; channel < std::min(channels, _tag_P2Clip::kAudioSlots); ++channel) {
        clip.AudioPath[channel] = clip.VideoPath;
        MarkIfPresent(clip, clip.VideoPath, channel + 1);
    }
}

/// A file each. A name that could lead out of the card's folders makes no path at all.
void AssumeEssence(const ClipFiles& files, int channels, _tag_P2Clip& clip) {
    if (!files.HavePlainName()) {
        return;
    }
    clip.VideoPath = files.PathOf(media::kVideoFiles, media::SuffixOf(media::kVideoFiles));
    clip.EssenceMask |= Bit(0);
    for (int channel = 0; channel < std::min(channels - 1, _tag_P2Clip::kAudioSlots); ++channel) {
        clip.AudioPath[channel] =
            files.PathOf(media::kAudioFiles,
                         media::SuffixOf(media::kAudioFiles, static_cast<std::size_t>(channel)));
        clip.EssenceMask |= Bit(channel + 1);
    }
}

} // namespace

EssenceLookup::EssenceLookup(platform::Place contents, Mode mode)
    : m_contents(std::move(contents)), m_mode(mode) {}

const platform::Place& EssenceLookup::FolderOf(const media::ClipFileKind& kind) const {
    auto& folder = m_folders[IndexOf(kind)];
    if (!folder) {
        folder = m_contents.Below(kind.folder.Path());
    }
    return *folder;
}

bool EssenceLookup::Has(const media::ClipFileKind& kind, const std::string& name) const {
    const platform::Place& folder = FolderOf(kind);
    if (m_mode == Mode::OneClip) {
        return folder.Has(name);
    }
    const platform::FolderEntry* const entry = folder.Names().Find(name);
    Answers& answers = m_answers[IndexOf(kind)];
    answers.areThere = true;
    answers.areExact = answers.areExact && (entry == nullptr || entry->name == name);
    return entry != nullptr;
}

std::vector<CString> EssenceLookup::ExactFolders() const {
    std::vector<CString> folders;
    for (const media::ClipFileKind& kind : media::kClipFileKinds) {
        const Answers& answers = m_answers[IndexOf(kind)];
        const bool isRead = answers.areThere || &kind == &media::kMetadataFiles;
        if (isRead && answers.areExact) {
            folders.push_back(FolderOf(kind).Written());
        }
    }
    return folders;
}

void FindNamedFiles(const EssenceLookup& essence, _tag_P2Clip& clip) {
    ClipFiles files(essence, clip.ClipName);
    clip.EssenceMask = 0;
    FindCompanions(files, clip);
    clip.VideoPath = files.PathIfExists(media::kVideoFiles);
    MarkIfPresent(clip, clip.VideoPath, 0);
    for (int channel = 0; channel < kNamedChannels; ++channel) {
        clip.AudioPath[channel] =
            files.PathIfExists(media::kAudioFiles, static_cast<std::size_t>(channel));
        MarkIfPresent(clip, clip.AudioPath[channel], channel + 1);
    }
}

void FindScannedFiles(const EssenceLookup& essence, bool inOneFile, int channels,
                      _tag_P2Clip& clip) {
    ClipFiles files(essence, clip.ClipName);
    clip.EssenceMask = 0;
    FindCompanions(files, clip);
    if (inOneFile) {
        FindFamilyEssence(files, channels, clip);
    } else {
        AssumeEssence(files, channels, clip);
    }
}

} // namespace nqp2::clips
