// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/support/print_text.h"
#include "tests/worker/essence_maker.h"
#include "tests/worker/transfer_fixture.h"
#include "worker/essence_file.h"
#include "worker/rewrap/file_maker.h"
#include "worker/rewrap/recording_input.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace nqp2::worker {

inline constexpr AVPixelFormat kDeep422 = AV_PIX_FMT_YUV422P10LE;
inline constexpr AVPixelFormat kDeep420 = AV_PIX_FMT_YUV420P10LE;
inline constexpr AVRational k2997 = {30000, 1001};
inline constexpr AVRational k5994 = {60000, 1001};
inline constexpr RewrapContainer kContainers[] = {RewrapContainer::Mov, RewrapContainer::Mxf,
                                                  RewrapContainer::Mkv, RewrapContainer::Mp4};
inline constexpr const char* kSuffixes[] = {".mov", ".mxf", ".mkv", ".mp4"};

/// Samples of one channel: noise, another for each seed.
inline std::string Samples(std::int64_t count, int bits, unsigned seed) {
    std::string bytes(static_cast<std::size_t>(count * bits / 8), '\0');
    for (char& byte : bytes) {
        seed = seed * 1664525 + 1013904223;
        byte = static_cast<char>(seed >> 24U);
    }
    return bytes;
}

/// One file of a recording's parts. The parts are written by the worker's own OP-Atom files and by
/// libavformat; what comes out is played by libavcodec, which knows nothing of how it was made.
class RewrapTest : public testing::Test {
protected:
    RewrapTest() { EXPECT_TRUE(platform::Files().OpenFolder(m_from.Path(), m_folder)); }

    RewrapRequest Request(RewrapContainer container, const TestEncoding& encoding,
                          bool interlaced) const {
        RewrapRequest request;
        request.container = container;
        request.target = InterfaceRoot(m_to.Path()) + L"\\file" +
                         Name(kSuffixes[static_cast<std::size_t>(container)]);
        request.rate = {encoding.rate.num, encoding.rate.den};
        request.interlaced = interlaced;
        request.aspectWidth = 16;
        request.aspectHeight = 9;
        return request;
    }
    std::string PathOf(const RewrapRequest& request) const {
        return m_to.Path(std::string("file") +
                         kSuffixes[static_cast<std::size_t>(request.container)]);
    }

    /// A part of those units, and its sound.
    RewrapPart Part(const std::string& name, const TestEncoding& encoding, bool interlaced,
                    const std::vector<std::string>& units, const std::vector<std::string>& sounds,
                    int bits = 16) {
        std::filesystem::remove(m_from.Path(name + ".MXF"));
        VideoFormat format;
        format.codec =
            std::string(encoding.encoder) == "dvvideo" ? VideoCodec::Dv : VideoCodec::AvcIntra;
        format.width = encoding.width;
        format.height = encoding.height;
        format.interlaced = interlaced;
        format.rate = {encoding.rate.num, encoding.rate.den};
        format.timecode = "00:00:00:00";
        EssenceFile video(*m_folder, name + ".MXF", format);
        for (const std::string& unit : units) {
            video.Add(unit);
        }
        video.Finish(0);
        video.Commit();
        RewrapPart part;
        part.name = Name(name.c_str());
        part.video = InterfaceRoot(m_from.Path(name + ".MXF"));
        for (std::size_t i = 0; i < sounds.size(); ++i) {
            const std::string file = name + "0" + std::to_string(i) + ".MXF";
            std::filesystem::remove(m_from.Path(file));
            EssenceFile sound(*m_folder, file, SoundFormat{bits, format.rate});
            sound.Add(sounds[i]);
            sound.Finish(0);
            sound.Commit();
            part.sounds.Add(InterfaceRoot(m_from.Path(file)));
        }
        return part;
    }

    /// The sentence of its failure, of which nothing may be left.
    std::string Make(const RewrapRequest& request) {
        m_result = {};
        const auto before = FilesBelow(m_to.Path());
        RecordingWatch watch;
        const std::string error =
            ErrorOf([&] { m_result = rewrap::MakeFile(rewrap::Checked(request), watch); });
        EXPECT_TRUE(error.empty() || FilesBelow(m_to.Path()) == before) << error;
        return error;
    }

    test::TempFolder m_from;
    test::TempFolder m_to;
    std::unique_ptr<platform::Folder> m_folder;
    RewrapResult m_result;
};

class DvRewrapTest : public RewrapTest {
protected:
    /// A part of so many frames of two channels; `surplus` samples more than that.
    RewrapPart DvPart(const std::string& name, int frames, int surplus = 0) {
        return Part(name, kDv25Pal, true, {m_units.begin(), m_units.begin() + frames},
                    {Samples(frames * 1920 + surplus, 16, 7), Samples(frames * 1920, 16, 8)});
    }
    RewrapRequest DvRequest(const std::vector<RewrapPart>& parts,
                            RewrapContainer container = RewrapContainer::Mov) const {
        RewrapRequest request = Request(container, kDv25Pal, true);
        for (const RewrapPart& part : parts) {
            request.parts.Add(part);
        }
        return request;
    }

    std::vector<std::string> m_units = EncodePictures(kDv25Pal, 8);
};

} // namespace nqp2::worker
