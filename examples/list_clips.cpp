// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include <NQP2ParserU/NQP2Parser.h>
#include <NQP2ParserU/PathText.h>
#include <NQP2ParserU/TextBytes.h>

#include <cstdio>

int main(int argc, char** argv) {
    CNQP2Parser parser;
    parser.Init();
    CArray<_tag_P2Clip> clips;
    const CString card = nqp2::InterfaceRoot(argc > 1 ? argv[1] : "/media/card");
    const bool failed = parser.LoadClipEx(card, clips, 1) != 0;
    for (const _tag_P2Clip& clip : clips) {
        std::printf("%s %s %d\n", nqp2::BytesFromText(clip.ClipName).c_str(),
                    nqp2::BytesFromText(clip.CodecName).c_str(), clip.Duration);
    }
    parser.Release();
    return failed ? 1 : 0;
}
