// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/av/av_headers.h"

#include <cstddef>
#include <cstring>

namespace nqp2::worker {
namespace {

class AvModule final : public MediaModule {
public:
    AvModule() {
        // The tables of a camera file that records for half a day take less; what a forged count
        // asks for would not end.
        constexpr std::size_t kLargestBlock = std::size_t{64} << 20U;
        av_max_alloc(kLargestBlock);
        av_log_set_level(AV_LOG_QUIET);
    }
    MediaFault Describe(MediaInput& input, MediaFacts& facts) const noexcept override {
        return WithoutThrowing([&] { return ReadMedia(input, facts); });
    }
    MediaFault DescribeAll(MediaInput& input,
                           MediaDescription& description) const noexcept override {
        return WithoutThrowing([&] { return ReadDescription(input, description); });
    }
    MediaFault MakePicture(MediaInput& input, std::int32_t width, std::int32_t height,
                           Picture& picture) const noexcept override {
        return WithoutThrowing([&] { return ReadPicture(input, width, height, picture); });
    }
    MediaFault MuxVideo(const VideoFormat& format, MediaOutput& output,
                        std::unique_ptr<EssenceMuxer>& muxer) const noexcept override {
        return WithoutThrowing([&] { return MakeVideoMuxer(format, output, muxer); });
    }
    MediaFault MuxSound(const SoundFormat& format, MediaOutput& output,
                        std::unique_ptr<EssenceMuxer>& muxer) const noexcept override {
        return WithoutThrowing([&] { return MakeSoundMuxer(format, output, muxer); });
    }
    MediaFault OpenReader(MediaInput& input, const char* containers, MediaLook look,
                          std::unique_ptr<MediaReader>& reader) const noexcept override {
        return WithoutThrowing([&] { return MakeReader(input, containers, look, reader); });
    }
    MediaFault OpenWriter(const FilePlan& plan, MediaOutput& output,
                          std::unique_ptr<MediaWriter>& writer) const noexcept override {
        return WithoutThrowing([&] { return MakeWriter(plan, output, writer); });
    }
};

} // namespace
} // namespace nqp2::worker

/// The one symbol that the module shows.
extern "C" __attribute__((visibility("default"))) const nqp2::worker::MediaModule*
Nqp2MediaModule(const char* version) {
    static const nqp2::worker::AvModule module;
    return std::strcmp(version, NQP2_VERSION) == 0 ? &module : nullptr;
}
