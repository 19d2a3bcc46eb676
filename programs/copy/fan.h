// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/digest.h"
#include "copy/new_file.h"
#include "platform/folder.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nqp2::copy {

/// A file or folder of the source.
struct FanItem {
    std::string path;        ///< below the roots, bytes as they are: "CONTENTS/VIDEO/0001AB.MXF"
    platform::FileInfo info; ///< as it was when it was listed: what differs by now has changed
    std::size_t number = 0;  ///< the caller's own, for whatever is told of it
};

/// Sees the bytes of every file that is read, in order and once, in a thread of its own where there
/// is one. What it throws ends the fan.
class BlockTaker {
public:
    virtual ~BlockTaker() = default;
    virtual void Begin(const FanItem& file) = 0;
    virtual void Take(std::string_view bytes) = 0;
    /// `isWhole`: all bytes were read and the file did not change meanwhile; otherwise what was
    /// taken of it counts for nothing.
    virtual void End(const FanItem& file, bool isWhole) = 0;
};

/// How a file came to be on a target.
enum class Arrival {
    Copied,    ///< written, and read back from the medium
    WasThere,  ///< it had the source's bytes already, read around the cache
    CopiedAnew ///< as Copied; what was there with other bytes was set aside before
};

/// Is told what becomes of each file, always in the thread that calls the fan.
class FanReport {
public:
    virtual ~FanReport() = default;
    /// Asked between any two blocks and at least some times a second while the fan waits. Returns
    /// false to end it: a Failure with "Cancelled.", and nothing half-written has a real name.
    [[nodiscard]] virtual bool GoesOn() = 0;
    /// The whole file was read, and every taker has ended it. `digest`: XXH3 in 128 bits, seed 0,
    /// canonical.
    virtual void HasRead(const FanItem& file, const Digest::Bytes& digest) = 0;
    /// It cannot be read, or has changed: no target has it from this run.
    virtual void CannotRead(const FanItem& file, const std::string& sentence) = 0;
    /// The file has its name on a target, proven; after HasRead.
    virtual void HasArrived(std::size_t target, const FanItem& file, Arrival how) = 0;
    /// What had the file's name there and other bytes has the name `aside` now, beside it.
    virtual void HasSetAside(std::size_t target, const FanItem& file, const std::string& aside) = 0;
    /// This file or folder is not on the target, or not as it should be; the target goes on.
    virtual void HasFailed(std::size_t target, const FanItem& item,
                           const std::string& sentence) = 0;
    /// The target failed and takes no more; what has not arrived there will not.
    virtual void HasEnded(std::size_t target, const std::string& sentence) = 0;
};

/// How far a target has come, in bytes of files.
struct FanProgress {
    std::uint64_t written = 0; ///< or compared with what is there
    std::uint64_t proven = 0;  ///< of files that have arrived
    bool hasEnded = false;
};

struct FanSettings {
    std::size_t block = std::size_t{4} << 20U;
    std::uint64_t mostInFlight = std::uint64_t{32} << 20U; ///< bytes read and not yet written
    std::uint64_t smallFile = std::uint64_t{1} << 20U;     ///< up to it files are proven in batches
    std::size_t batchFiles = 1000;
    std::uint64_t batchBytes = std::uint64_t{64} << 20U;
    /// Says why a file that is on a target, and differs from the source, must stay under its name;
    /// "" when it may be set aside, as all may without this. Called in the target's own thread.
    std::function<std::string(std::size_t target, const FanItem&, platform::FileReader& there)>
        whyKept = {};
    /// Does a little of the caller's own, in the caller's thread, while that would only wait for
    /// the targets. False: there is nothing to do now.
    std::function<bool()> meanwhile = {};
};

/// Where a target's files go.
struct FanRoot {
    /// By its path: absolute, perhaps through a link; made when it is missing, with all above it.
    /// Or an open folder that nobody else uses meanwhile, whatever becomes of the path.
    FanRoot(std::string where, // NOLINT(google-explicit-constructor)
            std::shared_ptr<platform::Folder> opened = nullptr)
        : path(std::move(where)), folder(std::move(opened)) {}

    std::string path;
    std::shared_ptr<platform::Folder> folder;
};

/// Reads files once, around the cache, and gives them to all targets at once, a thread to each.
/// A file arrives under a hidden name, is flushed, dropped from the cache, read back from the
/// medium, compared, and named without replacing anything; small ones do so by batches. What is
/// there already is compared with the source instead, and set aside when it differs. Nothing is
/// written through a link below the roots. A target that fails ends for itself. Without targets
/// files are only read, for the takers and the digest.
///
/// Memory: `mostInFlight` and a block of 1 MiB to each target. Where there are no threads, all is
/// done in the caller's. Used by one thread; throws a Failure when it is cancelled and whatever a
/// taker throws, after which it is only destroyed. What has no name by then is gone.
class Fan {
public:
    /// Source, takers and report outlive it.
    Fan(platform::Folder& source, std::vector<FanRoot> targets, std::vector<BlockTaker*> takers,
        FanReport& report, const FanSettings& settings = {});
    ~Fan();
    Fan(const Fan&) = delete;
    Fan& operator=(const Fan&) = delete;

    /// Reads a file. What becomes of it is told during this call or a later one. It is quickest
    /// when the files of a folder come together.
    void Copy(const FanItem& file);
    /// Makes a folder on all targets, with those above it; one that is there is fine.
    void MakeFolder(const FanItem& folder);
    /// Proves what is pending and waits until all is told. More may be copied afterwards.
    void Finish();
    /// Gives folders the times of the source's ("" is the root). When nothing else will be written
    /// into them.
    void KeepTimes(std::span<const FanItem> folders);

    /// Whether there were targets and all have ended: the rest need not be read.
    [[nodiscard]] bool HasNoTarget() const;
    /// Bytes of the source read so far.
    [[nodiscard]] std::uint64_t BytesRead() const;
    [[nodiscard]] FanProgress Progress(std::size_t target) const;

private:
    class Work;
    std::unique_ptr<Work> m_work;
};

} // namespace nqp2::copy
