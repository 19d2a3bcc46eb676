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

#define SHOW(field) Shown::value_type(#field, Show(clip.field))
#define PROXY(field) Shown::value_type(#field, Show(clip.Proxy.field))
    [[nodiscard]] Shown All(const _tag_P2Clip& clip) const {
        return Together(
            SHOW(ShootStartTime), SHOW(GlobalClipGuid), SHOW(GlobalClipID), SHOW(CodecName),
            SHOW(ActivePixel), SHOW(ActiveLine), SHOW(BitDepth), SHOW(ExtraPath), SHOW(IconPath),
            SHOW(VideoPath), SHOW(AudioPath), SHOW(XmlPath), SHOW(ProxyPath),
            SHOW(ProxyVideoCodecName), PROXY(ProxyFilePath), PROXY(ProxyFormat), PROXY(ProxyExt),
            PROXY(ProxyAudioMask), PROXY(ProxyVideoCodec), PROXY(ProxyVideoBitRate),
            PROXY(ProxyFrameRate), PROXY(ProxyResolution), PROXY(ProxyAspectRatio),
            PROXY(ProxyAudioCodec), PROXY(ProxyAudioBitRate), PROXY(ProxySamplingRate),
            PROXY(ProxyAudioChannels), SHOW(AvcIntraClass50), SHOW(CodecClass), SHOW(ClipIdDigit),
            SHOW(Reserved276), SHOW(Duration), SHOW(UnusedOffset), SHOW(Reserved288),
            SHOW(AudioStartByteOffset), SHOW(AudioDataSize), SHOW(VideoStartByteOffset),
            SHOW(VideoDataSize), SHOW(EssenceMask), SHOW(TopClipGuid), SHOW(NextClipGuid),
            SHOW(PreviousClipGuid), SHOW(OffsetInShot), SHOW(GlobalShotGuid), SHOW(TopClipName),
            SHOW(PreviousClipName), SHOW(NextClipName), SHOW(TopSerialNo), SHOW(PreviousSerialNo),
            SHOW(NextSerialNo), SHOW(FrameRate), SHOW(StartDate), SHOW(EndDate), SHOW(ClipName),
            SHOW(AspectRatio), SHOW(Memos), SHOW(AudioBitsPerSample), SHOW(UserClipName),
            SHOW(StartTimecode), SHOW(DropFrame), SHOW(SourceKind));
    }
#undef SHOW
#undef PROXY

    CString m_contents;
    Shown m_shown;
};

} // namespace nqp2::clips
