// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/rewrap/stream_file.h"

#include "copy/failure.h"
#include "platform/file_system.h"
#include "worker/base/media_loader.h"

#include <algorithm>
#include <utility>

namespace nqp2::worker::rewrap {
namespace {

constexpr const char* kSources = "mxf,mov,mp4,m4a,3gp,3g2,mj2,mpegts";

std::unique_ptr<BoundedFile> Opened(const std::string& path, const std::function<bool()>& goesOn) {
    platform::FileInfo info;
    copy::Require(platform::Files().Stat(path, info), "read", path);
    return std::make_unique<BoundedFile>(path, goesOn, LimitsFor(info.size));
}

} // namespace

MediaLimits LimitsFor(std::uint64_t bytes) {
    constexpr std::uint64_t kHeadBytes = std::uint64_t{64} << 20U;
    constexpr std::chrono::seconds kStart(60);
    constexpr std::uint64_t kBytesASecond = std::uint64_t{4} << 20U;
    return {2 * bytes + kHeadBytes,
            kStart + std::chrono::seconds(static_cast<std::int64_t>(bytes / kBytesASecond))};
}

StreamFile::StreamFile(const std::string& path, const std::function<bool()>& goesOn, MediaLook look)
    : m_file(Opened(path, goesOn)), m_input(*m_file),
      m_requireNotStopped([this] { m_file->RequireNotStopped(); }) {
    Open(kSources, look);
}

StreamFile::StreamFile(MediaInput& input, const char* containers, MediaLook look,
                       std::function<void()> requireNotStopped)
    : m_input(input), m_requireNotStopped(std::move(requireNotStopped)) {
    Open(containers, look);
}

StreamFile::~StreamFile() = default;

void StreamFile::Open(const char* containers, MediaLook look) {
    Require(LoadMediaModule().OpenReader(m_input, containers, look, m_reader));
}

void StreamFile::Require(const MediaFault& fault) const {
    m_requireNotStopped();
    if (!fault.empty()) {
        throw copy::Failure("Cannot understand " + Name() + ": " + fault + ".");
    }
}

bool StreamFile::Next(MediaUnit& unit) {
    bool isEnd = false;
    Require(m_reader->Next(unit, isEnd));
    return !isEnd;
}

void StreamFile::GoTo(std::size_t stream, std::int64_t tick) {
    Require(m_reader->GoTo(stream, tick));
}

std::size_t StreamFile::First(StreamKind kind) const {
    const auto& all = Streams();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const MediaStream& each) { return each.kind == kind; });
    return static_cast<std::size_t>(found - all.begin());
}

std::size_t StreamFile::Picture() const {
    const std::size_t found = First(StreamKind::Picture);
    if (found == Streams().size()) {
        throw copy::Failure(Name() + " holds no picture.");
    }
    return found;
}

} // namespace nqp2::worker::rewrap
