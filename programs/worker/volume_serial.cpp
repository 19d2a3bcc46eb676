// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/card_requests.h"

#include "copy/failure.h"
#include "platform/descriptor.h"
#include "platform/unicode.h"
#include "worker/base/card_folder.h"

#include <blkid/blkid.h>
#include <fcntl.h>
#include <libudev.h>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <sys/stat.h>

namespace nqp2::worker {
namespace {

struct Release {
    void operator()(udev* database) const { udev_unref(database); }
    void operator()(udev_device* device) const { udev_device_unref(device); }
    void operator()(blkid_struct_probe* probe) const { blkid_free_probe(probe); }
};

std::string Text(const char* text) {
    return text != nullptr ? text : "";
}

/// What the volume itself says; "" where this user may not read the device. The node must be that
/// of the device: nodes are names, and may be old.
std::string ReadFromDevice(const std::string& node, dev_t device) {
    const platform::Descriptor file(
        open(node.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat facts = {};
    if (!file || fstat(file.Get(), &facts) != 0 || !S_ISBLK(facts.st_mode) ||
        facts.st_rdev != device) {
        return {};
    }
    const std::unique_ptr<blkid_struct_probe, Release> probe(blkid_new_probe());
    const char* number = nullptr;
    if (probe == nullptr || blkid_probe_set_device(probe.get(), file.Get(), 0, 0) != 0 ||
        blkid_probe_enable_superblocks(probe.get(), 1) != 0 ||
        blkid_probe_set_superblocks_flags(probe.get(), BLKID_SUBLKS_UUID) != 0 ||
        blkid_do_safeprobe(probe.get()) != 0 ||
        blkid_probe_lookup_value(probe.get(), "UUID", &number, nullptr) != 0) {
        return {};
    }
    return Text(number);
}

/// What the system knows of a volume.
struct Volume {
    std::string node;   ///< of its device
    std::string number; ///< as it was when the system met it, or ""
};

/// Nothing when it stands on no device of its own. One look at a time: two that come first would
/// write the library's one key for its tables at once.
std::optional<Volume> LookUp(dev_t number) {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    const std::unique_ptr<udev, Release> database(udev_new());
    const std::unique_ptr<udev_device, Release> device(
        database != nullptr ? udev_device_new_from_devnum(database.get(), 'b', number) : nullptr);
    if (device == nullptr) {
        return std::nullopt;
    }
    return Volume{Text(udev_device_get_devnode(device.get())),
                  Text(udev_device_get_property_value(device.get(), "ID_FS_UUID"))};
}

} // namespace

CString FindVolumeSerial(const CString& path) {
    const std::string folder = RootOf(path).OnDisk();
    struct stat facts = {};
    if (stat(folder.c_str(), &facts) != 0) {
        throw copy::Failure("There is nothing at " + folder + ".");
    }
    const std::optional<Volume> volume = LookUp(facts.st_dev);
    if (!volume) {
        throw copy::Failure("The file system of " + folder + " stands on no device of its own.");
    }
    std::string number = ReadFromDevice(volume->node, facts.st_dev);
    if (number.empty()) {
        number = volume->number; // for those who may not read the device
    }
    if (number.empty()) {
        throw copy::Failure("No serial number of this volume can be read from " + volume->node +
                            ", and the system's device database has none.");
    }
    return platform::TextFromUtf8(number);
}

} // namespace nqp2::worker
