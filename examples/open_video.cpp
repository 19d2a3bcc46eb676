// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include <NQP2ParserU/CardFinder.h>
#include <NQP2ParserU/NQP2Parser.h>
#include <NQP2ParserU/PathText.h>
#include <NQP2ParserU/ReadyParser.h>
#include <NQP2ParserU/RealPaths.h>
#include <NQP2ParserU/ScanReport.h>
#include <NQP2ParserU/TextBytes.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <cstdio>
#include <string>

/// Lists the clips of a card, says what the scan left out, and opens the video of one of them, of
/// the first that has any when none is named: open_video CARD [CLIP]

namespace {

std::string Bytes(const CString& text) {
    return nqp2::BytesFromText(text);
}

/// The card that a folder is, is a part of, or leads to.
bool FindOne(const char* folder, nqp2::FoundCard& card) {
    nqp2::CardSearch search;
    nqp2::FindCard(nqp2::InterfaceRoot(folder), search);
    if (search.cards.GetSize() != 1) {
        std::fprintf(stderr, "%s leads to %lld cards\n", folder,
                     static_cast<long long>(search.cards.GetSize()));
        return false;
    }
    card = search.cards[0];
    return true;
}

/// Lists the clips, and what was left out.
bool Scan(const nqp2::FoundCard& card, CArray<_tag_P2Clip>& clips) {
    nqp2::ReadyParser parser;
    nqp2::ScanReport report;
    const bool isP2 = card.kind == nqp2::CardKind::P2;
    const bool failed = (isP2 ? parser->LoadClipEx(card.root, clips, 1, report)
                              : parser->LoadAVCHDClip(card.root, clips, report)) != 0;
    if (failed) {
        std::fprintf(stderr, "%s\n", Bytes(report.failure).c_str());
        return false;
    }
    for (const nqp2::SkippedFile& file : report.skipped) {
        std::fprintf(stderr, "%s: %s\n", Bytes(file.path).c_str(), Bytes(file.text).c_str());
    }
    for (const _tag_P2Clip& clip : clips) {
        std::printf("%s  %s  %s  %d frames\n", Bytes(clip.ClipName).c_str(),
                    Bytes(clip.CodecName).c_str(), Bytes(clip.FrameRate).c_str(), clip.Duration);
    }
    return true;
}

/// The clip's video where the system finds it. Records hold interface paths, in the letters of the
/// metadata: "/media/card:\CONTENTS\VIDEO\0001AB.MXF".
std::string VideoOf(const _tag_P2Clip& clip) {
    nqp2::RealPaths paths;
    return paths.Find(clip.VideoPath);
}

bool Open(const std::string& path) {
    AVFormatContext* media = nullptr;
    if (avformat_open_input(&media, path.c_str(), nullptr, nullptr) < 0) {
        std::fprintf(stderr, "%s cannot be opened\n", path.c_str());
        return false;
    }
    const bool isRead = avformat_find_stream_info(media, nullptr) >= 0;
    for (unsigned i = 0; isRead && i < media->nb_streams; ++i) {
        const AVCodecParameters& stream = *media->streams[i]->codecpar;
        std::printf("%s: stream %u is %s, %d x %d\n", path.c_str(), i,
                    avcodec_get_name(stream.codec_id), stream.width, stream.height);
    }
    avformat_close_input(&media);
    return isRead;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: open_video CARD [CLIP]\n");
        return 2;
    }
    nqp2::FoundCard card;
    CArray<_tag_P2Clip> clips;
    if (!FindOne(argv[1], card) || !Scan(card, clips)) {
        return 1;
    }
    const CString wanted = argc > 2 ? nqp2::TextFromBytes(argv[2]) : CString();
    for (const _tag_P2Clip& clip : clips) {
        if (!clip.VideoPath.IsEmpty() &&
            (wanted.IsEmpty() || clip.ClipName.CompareNoCase(wanted) == 0)) {
            return Open(VideoOf(clip)) ? 0 : 1;
        }
    }
    std::fprintf(stderr, "no such clip with a video\n");
    return 1;
}
