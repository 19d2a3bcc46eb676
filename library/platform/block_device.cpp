// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/block_device.h"

#include "platform/descriptor.h"

#include <algorithm>
#include <cstddef>
#include <fcntl.h>
#include <iterator>
#include <linux/loop.h>
#include <string>
#include <sys/ioctl.h>

namespace nqp2::platform {

bool IsDisk(std::string_view device) {
    constexpr std::string_view kOthers[] = {"ram", "zram", "nbd", "loop"};
    const std::size_t end = device.find_last_not_of("0123456789") + 1;
    return !device.empty() && std::find(std::begin(kOthers), std::end(kOthers),
                                        device.substr(0, end)) == std::end(kOthers);
}

bool IsBehindLoop(std::string_view device, const struct stat& file) {
    const std::string path = "/dev/" + std::string(device);
    const Descriptor loop(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    loop_info64 info = {};
    return loop && ioctl(loop.Get(), LOOP_GET_STATUS64, &info) == 0 &&
           info.lo_device == file.st_dev && info.lo_inode == file.st_ino;
}

} // namespace nqp2::platform
