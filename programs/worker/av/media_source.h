// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/av/av_headers.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory>

namespace nqp2::worker {

/// Containers of the files of cameras and cards.
inline constexpr const char* kContainers = "mov,mp4,m4a,3gp,3g2,mj2,avi,mxf,mpegts";

struct CloseInput {
    void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
};
using Format = std::unique_ptr<AVFormatContext, CloseInput>;

/// A file as libavformat reads it: in small pieces, since it jumps, and by us alone.
class Source {
public:
    explicit Source(MediaInput& input, int bufferSize = 1 << 13)
        : m_input(input), m_io(MakeIo(this, bufferSize, Read, nullptr, Seek)) {}

    /// Fails for what is none of the containers that are named. `allTags`: also those whose meaning
    /// libavformat does not know. Without `looksInside` no stream is read.
    MediaFault Open(const char* containers, Format& format, bool allTags = false,
                    bool looksInside = true) {
        AVFormatContext* opened = avformat_alloc_context();
        if (opened == nullptr) {
            return AvReason(AVERROR(ENOMEM));
        }
        opened->pb = m_io.get();
        opened->io_open = OpenNoOther;
        opened->interrupt_callback = {IsOver, this};
        AVDictionary* options = nullptr;
        av_dict_set(&options, "format_whitelist", containers, 0);
        av_dict_set(&options, "probesize", "8000000", 0);
        av_dict_set(&options, "max_streams", "64", 0);
        av_dict_set(&options, "export_all", allTags ? "1" : "0", 0);
        int result = avformat_open_input(&opened, m_input.Name().c_str(), nullptr, &options);
        av_dict_free(&options);
        if (result >= 0) {
            format.reset(opened);
            result = looksInside ? avformat_find_stream_info(opened, nullptr) : 0;
        }
        return result >= 0 ? MediaFault() : AvReason(result);
    }

private:
    static Source& Self(void* source) { return *static_cast<Source*>(source); }

    static int IsOver(void* source) { return Self(source).m_input.GoesOn() ? 0 : 1; }

    static int Read(void* source, std::uint8_t* bytes, int capacity) {
        Source& self = Self(source);
        const std::int64_t count =
            self.m_input.ReadAt(self.m_position, reinterpret_cast<char*>(bytes),
                                static_cast<std::size_t>(std::max(capacity, 0)));
        if (count <= 0) {
            return count == 0 ? AVERROR_EOF : AVERROR_EXIT;
        }
        self.m_position += static_cast<std::uint64_t>(count);
        return static_cast<int>(count);
    }

    static std::int64_t Seek(void* source, std::int64_t offset, int whence) {
        Source& self = Self(source);
        return SeekTo(offset, whence, self.m_input.Size(), self.m_position);
    }

    /// A file may name others, which are none of ours.
    static int OpenNoOther(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
        return AVERROR(EACCES);
    }

    MediaInput& m_input;
    std::uint64_t m_position = 0;
    OwnIo m_io;
};

} // namespace nqp2::worker
