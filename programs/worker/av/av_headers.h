// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

// libavformat's headers are C and not written for our warnings.
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include "worker/base/media_module.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>
#include <string>

namespace nqp2::worker {

/// What an error number of libavformat means.
inline std::string AvReason(int error) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    return av_strerror(error, text, sizeof text) == 0 ? text : "error " + std::to_string(error);
}

struct PacketFree {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using OwnPacket = std::unique_ptr<AVPacket, PacketFree>;

struct IoFree {
    void operator()(AVIOContext* io) const {
        av_freep(&io->buffer);
        avio_context_free(&io);
    }
};
using OwnIo = std::unique_ptr<AVIOContext, IoFree>;

using Transfer = int (*)(void* owner, std::uint8_t* bytes, int count);
using Jump = std::int64_t (*)(void* owner, std::int64_t offset, int whence);

/// A file that `owner` reads or writes: one of the two is null.
inline OwnIo MakeIo(void* owner, int bufferSize, Transfer read, Transfer write, Jump jump) {
    auto* const buffer =
        static_cast<unsigned char*>(av_malloc(static_cast<std::size_t>(bufferSize)));
    OwnIo io(buffer != nullptr ? avio_alloc_context(buffer, bufferSize, write != nullptr ? 1 : 0,
                                                    owner, read, write, jump)
                               : nullptr);
    if (io == nullptr) {
        av_free(buffer);
        throw std::bad_alloc();
    }
    return io;
}

/// What a file of `size` bytes answers to libavformat's wish to go elsewhere.
inline std::int64_t SeekTo(std::int64_t offset, int whence, std::uint64_t size,
                           std::uint64_t& position) {
    std::int64_t base = 0;
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
        return static_cast<std::int64_t>(size);
    case SEEK_SET:
        break;
    case SEEK_CUR:
        base = static_cast<std::int64_t>(position);
        break;
    case SEEK_END:
        base = static_cast<std::int64_t>(size);
        break;
    default:
        return AVERROR(EINVAL);
    }
    std::int64_t wanted = 0;
    if (__builtin_add_overflow(base, offset, &wanted) || wanted < 0) {
        return AVERROR(EINVAL);
    }
    position = static_cast<std::uint64_t>(wanted);
    return wanted;
}

/// What MediaModule offers. Throws std::bad_alloc, beside the faults that it returns.
MediaFault ReadMedia(MediaInput& input, MediaFacts& facts);
MediaFault ReadDescription(MediaInput& input, MediaDescription& description);
MediaFault ReadPicture(MediaInput& input, std::int32_t width, std::int32_t height,
                       Picture& picture);
MediaFault MakeVideoMuxer(const VideoFormat& format, MediaOutput& output,
                          std::unique_ptr<EssenceMuxer>& muxer);
MediaFault MakeSoundMuxer(const SoundFormat& format, MediaOutput& output,
                          std::unique_ptr<EssenceMuxer>& muxer);

MediaFault MakeReader(MediaInput& input, const char* containers, MediaLook look,
                      std::unique_ptr<MediaReader>& reader);
MediaFault MakeWriter(const FilePlan& plan, MediaOutput& output,
                      std::unique_ptr<MediaWriter>& writer);

/// Runs what such a function does where nothing may be thrown.
template <class Operation>
MediaFault WithoutThrowing(Operation&& operation) noexcept {
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        return "out of memory"; // so short that it needs none
    }
}

} // namespace nqp2::worker
