// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/volume_serial.h"

#include "platform/case_blind.h"
#include "platform/unicode.h"
#include "worker/card_folder.h"

#include <blkid/blkid.h>
#include <cstdlib>
#include <memory>
#include <string>
#include <sys/stat.h>

namespace nqp2::worker {
namespace {

struct Free {
    // What the library hands out is freed in this way. NOLINTNEXTLINE(cppcoreguidelines-no-malloc)
    void operator()(char* text) const { std::free(text); }
};
using OwnText = std::unique_ptr<char, Free>;

} // namespace

Outcome FindVolumeSerial(const CString& path, CString& serial) {
    serial.Empty();
    std::string folder;
    if (Outcome outcome = ResolveRoot(path, folder); !outcome) {
        return outcome;
    }
    struct stat facts = {};
    const auto found = platform::FindExisting(folder);
    if (!found || stat(found->c_str(), &facts) != 0) {
        return Failure("There is nothing at " + folder + ".");
    }
    const OwnText device(blkid_devno_to_devname(facts.st_dev));
    if (device == nullptr) {
        return Failure("The file system of " + folder + " stands on no device of its own.");
    }
    const OwnText number(blkid_get_tag_value(nullptr, "UUID", device.get()));
    if (number == nullptr) {
        return Failure("No serial number can be read from " + std::string(device.get()) + ".");
    }
    serial = platform::TextFromUtf8(number.get());
    return {};
}

} // namespace nqp2::worker
