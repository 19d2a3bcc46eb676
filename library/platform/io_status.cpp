// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/io_status.h"

#include "platform/guard.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace nqp2::platform {
namespace {

struct Meaning {
    int number;
    IoError error;
};

constexpr Meaning kMeanings[] = {
    {0, IoError::None},           {ENOENT, IoError::NotFound},
    {ENOTDIR, IoError::NotFound}, {ENAMETOOLONG, IoError::NotFound},
    {ELOOP, IoError::NotFound},   {EACCES, IoError::Denied},
    {EPERM, IoError::Denied},     {EEXIST, IoError::Exists},
    {EISDIR, IoError::IsFolder},  {EFBIG, IoError::TooLarge},
    {ENOSPC, IoError::NoSpace},   {EDQUOT, IoError::NoSpace},
    {EROFS, IoError::ReadOnly},   {EIO, IoError::Device},
    {ENODEV, IoError::Device},    {ENXIO, IoError::Device},
    {ENOMEDIUM, IoError::Device}, {EREMOTEIO, IoError::Device},
    {ESTALE, IoError::Device},    {ETIMEDOUT, IoError::Device},
    {EHOSTDOWN, IoError::Device}, {EHOSTUNREACH, IoError::Device},
    {ENOTCONN, IoError::Device},
};

} // namespace

IoStatus SystemStatus(int errorNumber) {
    timesOutOfMemory += errorNumber == ENOMEM ? 1 : 0;
    const auto* const meaning =
        std::find_if(std::begin(kMeanings), std::end(kMeanings),
                     [&](const Meaning& entry) { return entry.number == errorNumber; });
    const IoError error = meaning != std::end(kMeanings) ? meaning->error : IoError::Other;
    if (error == IoError::None) {
        return {};
    }
    std::array<char, 256> buffer{};
    return {error, strerror_r(errorNumber, buffer.data(), buffer.size())};
}

} // namespace nqp2::platform
