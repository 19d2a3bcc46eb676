// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/av/av_headers.h"
#include "worker/av/media_reader.h"
#include "worker/av/muxer.h"
#include "worker/media_module.h"

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
    Outcome Describe(MediaInput& input, MediaFacts& facts) const override {
        return ReadMedia(input, facts);
    }
    std::unique_ptr<EssenceMuxer> MuxVideo(const VideoFormat& format, MediaOutput& output,
                                           std::string& reason) const override {
        return MakeVideoMuxer(format, output, reason);
    }
    std::unique_ptr<EssenceMuxer> MuxSound(const SoundFormat& format, MediaOutput& output,
                                           std::string& reason) const override {
        return MakeSoundMuxer(format, output, reason);
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
