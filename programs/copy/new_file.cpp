// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "copy/new_file.h"

#include <cstring>

namespace nqp2::copy {

using platform::IoStatus;

namespace {

bool IsZero(std::string_view bytes) {
    return bytes.empty() || (bytes.front() == '\0' &&
                             std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0);
}

} // namespace

IoStatus WriteOrLeaveHole(platform::FileWriter& writer, std::uint64_t position,
                          std::string_view bytes) {
    return IsZero(bytes) ? IoStatus() : writer.WriteAt(position, bytes);
}

IoStatus SetLengthAndTime(platform::FileWriter& writer, std::uint64_t size,
                          const std::optional<platform::FileInfo>& time) {
    IoStatus status = writer.Resize(size);
    return status && time ? TimeKept(writer.KeepTime(*time)) : status;
}

bool IsOfSameTime(const platform::FileInfo& one, const platform::FileInfo& other) {
    return one.modified == other.modified && one.modifiedNanoseconds == other.modifiedNanoseconds;
}

IoStatus TimeKept(const IoStatus& status) {
    return status.error == platform::IoError::Denied ? IoStatus() : status;
}

std::string InTheWay(const std::string& path, platform::EntryKind kind) {
    const bool isLink = kind == platform::EntryKind::Link;
    return path + " is in the way and is " + (isLink ? "a link." : "no file.");
}

std::uint64_t SpaceTaken(std::uint64_t size) {
    constexpr std::uint64_t kCluster = 32768;
    return (size / kCluster + 1) * kCluster;
}

std::string TooLittleSpace(const std::string& folder, std::uint64_t needed, std::uint64_t free) {
    return "There is too little space in " + folder + ": " + std::to_string(needed) +
           " bytes are needed, " + std::to_string(free) + " are free.";
}

} // namespace nqp2::copy
