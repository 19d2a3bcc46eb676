// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/av/av_headers.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory>

namespace nqp2::worker {

struct FreeFormat {
    void operator()(AVFormatContext* format) const { avformat_free_context(format); }
};
using OwnFormat = std::unique_ptr<AVFormatContext, FreeFormat>;

/// A file as libavformat writes it: it jumps back to complete its head.
class Sink {
public:
    explicit Sink(MediaOutput& output)
        : m_output(output), m_io(MakeIo(this, 1 << 20, nullptr, Drain, Seek)) {}
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;

    [[nodiscard]] AVIOContext& Io() { return *m_io; }

    /// What came of a call that was to write, with all of it written.
    MediaFault Flushed(int result) {
        avio_flush(m_io.get());
        return Checked(result);
    }
    /// What came of it and of all before.
    MediaFault Checked(int result) const {
        const int error = result < 0 ? result : m_io->error;
        return error < 0 ? AvReason(error) : MediaFault();
    }

private:
    static Sink& Self(void* sink) { return *static_cast<Sink*>(sink); }

    static int Drain(void* sink, std::uint8_t* bytes, int count) {
        Sink& self = Self(sink);
        const auto size = static_cast<std::size_t>(std::max(count, 0));
        if (!self.m_output.WriteAt(self.m_position, {reinterpret_cast<const char*>(bytes), size})) {
            return AVERROR(EIO);
        }
        self.m_position += size;
        self.m_size = std::max(self.m_size, self.m_position);
        return count;
    }

    static std::int64_t Seek(void* sink, std::int64_t offset, int whence) {
        Sink& self = Self(sink);
        return SeekTo(offset, whence, self.m_size, self.m_position);
    }

    MediaOutput& m_output;
    std::uint64_t m_position = 0;
    std::uint64_t m_size = 0;
    OwnIo m_io;
};

} // namespace nqp2::worker
