// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/P2Clip.h"
#include "platform/guid_text.h"
#include "platform/unicode.h"

#include <iomanip>
#include <map>
#include <sstream>
#include <string>

namespace nqp2::clips {

/// A record as texts by field name, so that tables can say what is expected. Paths are shown
/// without the contents folder in front, fields with the value of a fresh record are left out.
class ClipShow {
public:
    using Shown = std::map<std::string, std::string>;

    ClipShow(const _tag_P2Clip& clip, const CString& contents)
        : m_contents(contents), m_shown(All(clip)) {
        const Shown fresh = All(_tag_P2Clip());
        std::erase_if(m_shown,
                      [&](const auto& each) { return fresh.at(each.first) == each.second; });
    }

    [[nodiscard]] const Shown& Fields() const { return m_shown; }
    /// "" for a field that a fresh record has as well.
    [[nodiscard]] std::string operator[](const std::string& field) const {
        const auto found = m_shown.find(field);
        return found != m_shown.end() ? found->second : std::string();
    }
    /// Of fields separated by blanks, with "|" between.
    [[nodiscard]] std::string Joined(const std::string& fields) const {
        std::istringstream names(fields);
        std::string text;
        for (std::string name; names >> name;) {
            text += "|" + (*this)[name];
        }
        return text.substr(1);
    }

private:
    [[nodiscard]] std::string Show(const CString& text) const {
        const bool isBelow = text.Left(m_contents.GetLength()) == m_contents;
        return platform::Utf8FromText((isBelow ? text.Mid(m_contents.GetLength()) : text).View());
    }
    [[nodiscard]] std::string Show(const GUID& guid) const {
        return Show(platform::GuidText(guid));
    }
    static std::string Show(std::integral auto number) { return std::to_string(number); }
    static std::string Show(const COleDateTime& moment) {
        std::ostringstream text;
        text << std::fixed << std::setprecision(5) << moment.GetDays();
        return moment.GetStatus() == COleDateTime::valid ? text.str() : "invalid";
    }
    [[nodiscard]] std::string Show(const CString (&paths)[8]) const {
        std::string text;
        for (const CString& path : paths) {
            text += path.IsEmpty() ? "- " : Show(path) + ' ';
        }
        return text;
    }
    [[nodiscard]] std::string Show(const CArray<_tag_P2Memo>& memos) const {
        std::ostringstream text;
        for (const _tag_P2Memo& memo : memos) {
            text << (text.tellp() == 0 ? "" : "|") << memo.Offset << ',' << Show(memo.Person) << ','
                 << Show(memo.Text) << ',' << Show(memo.VoiceFormat) << ','
                 << memo.VoiceSamplingRate << ',' << memo.VoiceBitsPerSample << ','
                 << memo.VoiceChannelFlag;
        }
        return text.str();
    }
    static Shown Together(const auto&... rows) { return {rows...}; }

#define NQP2_SHOW(field) Shown::value_type(#field, Show(clip.field))
#define NQP2_SHOW_PROXY(field) Shown::value_type(#field, Show(clip.Proxy.field))
    [[nodiscard]] Shown All(const _tag_P2Clip& clip) const {
        return Together(
            NQP2_SHOW(ShootStartTime), NQP2_SHOW(GlobalClipGuid), NQP2_SHOW(GlobalClipID),
            NQP2_SHOW(CodecName), NQP2_SHOW(ActivePixel), NQP2_SHOW(ActiveLine),
            NQP2_SHOW(BitDepth), NQP2_SHOW(ExtraPath), NQP2_SHOW(IconPath), NQP2_SHOW(VideoPath),
            NQP2_SHOW(AudioPath), NQP2_SHOW(XmlPath), NQP2_SHOW(ProxyPath),
            NQP2_SHOW(ProxyVideoCodecName), NQP2_SHOW_PROXY(ProxyFilePath),
            NQP2_SHOW_PROXY(ProxyFormat), NQP2_SHOW_PROXY(ProxyExt),
            NQP2_SHOW_PROXY(ProxyAudioMask), NQP2_SHOW_PROXY(ProxyVideoCodec),
            NQP2_SHOW_PROXY(ProxyVideoBitRate), NQP2_SHOW_PROXY(ProxyFrameRate),
            NQP2_SHOW_PROXY(ProxyResolution), NQP2_SHOW_PROXY(ProxyAspectRatio),
            NQP2_SHOW_PROXY(ProxyAudioCodec), NQP2_SHOW_PROXY(ProxyAudioBitRate),
            NQP2_SHOW_PROXY(ProxySamplingRate), NQP2_SHOW_PROXY(ProxyAudioChannels),
            NQP2_SHOW(AvcIntraClass50), NQP2_SHOW(CodecClass), NQP2_SHOW(ClipIdDigit),
            NQP2_SHOW(Reserved276), NQP2_SHOW(Duration), NQP2_SHOW(UnusedOffset),
            NQP2_SHOW(Reserved288), NQP2_SHOW(AudioStartByteOffset), NQP2_SHOW(AudioDataSize),
            NQP2_SHOW(VideoStartByteOffset), NQP2_SHOW(VideoDataSize), NQP2_SHOW(EssenceMask),
            NQP2_SHOW(TopClipGuid), NQP2_SHOW(NextClipGuid), NQP2_SHOW(PreviousClipGuid),
            NQP2_SHOW(OffsetInShot), NQP2_SHOW(GlobalShotGuid), NQP2_SHOW(TopClipName),
            NQP2_SHOW(PreviousClipName), NQP2_SHOW(NextClipName), NQP2_SHOW(TopSerialNo),
            NQP2_SHOW(PreviousSerialNo), NQP2_SHOW(NextSerialNo), NQP2_SHOW(FrameRate),
            NQP2_SHOW(StartDate), NQP2_SHOW(EndDate), NQP2_SHOW(ClipName), NQP2_SHOW(AspectRatio),
            NQP2_SHOW(Memos), NQP2_SHOW(AudioBitsPerSample), NQP2_SHOW(UserClipName),
            NQP2_SHOW(StartTimecode), NQP2_SHOW(DropFrame), NQP2_SHOW(SourceKind));
    }
#undef NQP2_SHOW
#undef NQP2_SHOW_PROXY

    CString m_contents;
    Shown m_shown;
};

} // namespace nqp2::clips
