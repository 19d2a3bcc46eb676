// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/base/bounded_file.h"
#include "worker/base/media_streams.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace nqp2::worker::rewrap {

/// What is read on behalf of one request may cost: in proportion to the bytes of its files.
MediaLimits LimitsFor(std::uint64_t bytes);

/// The units of a foreign file, in their order. Everything throws a Failure.
class StreamFile {
public:
    /// `goesOn` outlives it.
    StreamFile(const std::string& path, const std::function<bool()>& goesOn,
               MediaLook look = MediaLook::First);
    /// The same for what is read elsewhere: `requireNotStopped` fails when reading had to end.
    StreamFile(MediaInput& input, const char* containers, MediaLook look,
               std::function<void()> requireNotStopped);
    ~StreamFile();
    StreamFile(const StreamFile&) = delete;
    StreamFile& operator=(const StreamFile&) = delete;

    [[nodiscard]] const MediaReader& Reader() const { return *m_reader; }
    [[nodiscard]] const std::vector<MediaStream>& Streams() const { return m_reader->Streams(); }
    [[nodiscard]] const std::string& Name() const { return m_input.Name(); }
    /// False at the end.
    bool Next(MediaUnit& unit);
    void GoTo(std::size_t stream, std::int64_t tick);

    /// The first stream of that kind; as many as there are streams when there is none.
    [[nodiscard]] std::size_t First(StreamKind kind) const;
    /// The first picture's; fails without one.
    [[nodiscard]] std::size_t Picture() const;

private:
    void Open(const char* containers, MediaLook look);
    void Require(const MediaFault& fault) const;

    std::unique_ptr<BoundedFile> m_file;
    MediaInput& m_input;
    std::function<void()> m_requireNotStopped;
    std::unique_ptr<MediaReader> m_reader;
};

} // namespace nqp2::worker::rewrap
