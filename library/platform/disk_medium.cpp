// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// The disks behind a folder, from what the system tells of its devices in /sys.

#include "platform/block_device.h"
#include "platform/disk.h"
#include "platform/durable_file.h"
#include "platform/host_name.h"
#include "platform/mount_table.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <ifaddrs.h>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <optional>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <utility>

namespace nqp2::platform {
namespace {

constexpr std::uint64_t kMostTable = 16U << 20U;
constexpr int kDeepest = 16; ///< volumes on volumes on files on disks

/// Each device once, however many ways lead to it.
class Disks {
public:
    /// Adds all disks behind an open file or folder. False: not all of them are known.
    bool AddBehindFile(int file, int depth) {
        struct statx facts = {};
        return statx(file, "", AT_EMPTY_PATH, STATX_BASIC_STATS | kMountNumber, &facts) == 0 &&
               AddBehindMount(facts, MountOf(facts), depth);
    }
    bool AddBehindMount(const struct statx& facts, const std::optional<Mount>& mount, int depth) {
        if (mount && mount->fileSystem == "btrfs") {
            return AddVolumes(mount->source, depth);
        }
        if (facts.stx_dev_major != 0) {
            return AddDevice(DeviceText(facts.stx_dev_major, facts.stx_dev_minor), depth);
        }
        return mount && AddNode(mount->source, depth);
    }

    static std::optional<Mount> MountOf(const struct statx& facts) {
        std::string table;
        if (!ReadAt(AT_FDCWD, "/proc/self/mountinfo", Links::Follow, kMostTable, table)) {
            return {};
        }
        std::optional<std::uint64_t> number;
        if ((facts.stx_mask & kMountNumber) != 0) {
            number = facts.stx_mnt_id;
        }
        return FindMount(table, number, DeviceText(facts.stx_dev_major, facts.stx_dev_minor));
    }

    static constexpr unsigned kMountNumber = STATX_MNT_ID;

    std::vector<std::string> found;

private:
    static std::string DeviceText(unsigned major, unsigned minor) {
        return std::to_string(major) + ':' + std::to_string(minor);
    }
    static std::string RealPath(const std::string& path) {
        std::array<char, PATH_MAX> real{};
        return realpath(path.c_str(), real.data()) != nullptr ? real.data() : "";
    }
    static std::string Text(const std::string& path) {
        std::string text;
        static_cast<void>(ReadAt(AT_FDCWD, path.c_str(), Links::Follow, kMostTable, text));
        return text.substr(0, text.find('\n'));
    }
    static std::vector<FolderEntry> Entries(const std::string& folder) {
        std::vector<FolderEntry> entries;
        static_cast<void>(DiskFiles().List(folder, entries));
        return entries;
    }

    bool AddNode(const std::string& path, int depth) {
        struct stat facts = {};
        return stat(path.c_str(), &facts) == 0 && S_ISBLK(facts.st_mode) &&
               AddDevice(DeviceText(major(facts.st_rdev), minor(facts.st_rdev)), depth);
    }
    bool AddDevice(const std::string& device, int depth) {
        return AddFolder(RealPath("/sys/dev/block/" + device), depth);
    }
    /// Of a device in /sys.
    bool AddFolder(std::string folder, int depth) {
        if (folder.empty() || depth > kDeepest) {
            return false;
        }
        if (!Text(folder + "/partition").empty()) {
            folder = FolderPart(folder);
        }
        const std::vector<FolderEntry> below = Entries(folder + "/slaves");
        if (!below.empty()) {
            return std::all_of(below.begin(), below.end(), [&](const FolderEntry& entry) {
                return AddFolder(RealPath(folder + "/slaves/" + entry.name), depth + 1);
            });
        }
        const std::string file = Text(folder + "/loop/backing_file");
        return file.empty() ? AddWhole(folder) : AddBacking(NamePart(folder), file, depth + 1);
    }
    bool AddBacking(const std::string& loop, const std::string& file, int depth) {
        const Descriptor open(::open(file.c_str(), O_PATH | O_CLOEXEC));
        struct stat facts = {};
        return open && fstat(open.Get(), &facts) == 0 && IsBehindLoop(loop, facts) &&
               AddBehindFile(open.Get(), depth);
    }
    bool AddWhole(const std::string& folder) {
        const std::string disk = IsDisk(NamePart(folder)) ? Text(folder + "/dev") : "";
        if (!disk.empty() && std::find(found.begin(), found.end(), disk) == found.end()) {
            found.push_back(disk);
        }
        return !disk.empty();
    }
    /// All devices of the file system that has this one.
    bool AddVolumes(const std::string& source, int depth) {
        const std::string systems = "/sys/fs/btrfs";
        const std::string name = NamePart(RealPath(source));
        for (const FolderEntry& system : Entries(systems)) {
            const std::string folder = systems + '/' + system.name + "/devices";
            const std::vector<FolderEntry> devices = Entries(folder);
            if (std::any_of(devices.begin(), devices.end(),
                            [&](const FolderEntry& each) { return each.name == name; })) {
                return std::all_of(devices.begin(), devices.end(), [&](const FolderEntry& each) {
                    return AddFolder(RealPath(folder + '/' + each.name), depth + 1);
                });
            }
        }
        return false;
    }
};

struct SizeLimit {
    std::string_view fileSystem;
    std::uint64_t largestFile;
};

/// Those that are met on cards and disks of people and that a recording can exceed.
constexpr SizeLimit kSizeLimits[] = {
    {"vfat", 0xFFFFFFFFU}, {"msdos", 0xFFFFFFFFU}, {"hfs", 0x7FFFFFFFU}};

/// Whether an address, as numbers, is one of this machine's.
bool IsOwnAddress(const std::string& address) {
    ifaddrs* first = nullptr;
    if (getifaddrs(&first) != 0) {
        return true; // nothing is known
    }
    const std::unique_ptr<ifaddrs, void (*)(ifaddrs*)> list(first, freeifaddrs);
    for (const ifaddrs* each = first; each != nullptr; each = each->ifa_next) {
        const int family = each->ifa_addr != nullptr ? each->ifa_addr->sa_family : AF_UNSPEC;
        const std::size_t size = family == AF_INET    ? sizeof(sockaddr_in)
                                 : family == AF_INET6 ? sizeof(sockaddr_in6)
                                                      : 0;
        std::array<char, NI_MAXHOST> text{};
        if (size != 0 &&
            getnameinfo(each->ifa_addr, static_cast<socklen_t>(size), text.data(), text.size(),
                        nullptr, 0, NI_NUMERICHOST) == 0 &&
            address == text.data()) {
            return true;
        }
    }
    return false;
}

std::uint64_t LargestFile(const std::string& fileSystem) {
    std::uint64_t largest = std::numeric_limits<off_t>::max();
    for (const SizeLimit& limit : kSizeLimits) {
        largest = limit.fileSystem == fileSystem ? limit.largestFile : largest;
    }
    return std::min(largest, MostFileSize());
}

} // namespace

IoStatus MediumOf(int file, MediumFacts& facts) {
    struct statx identity = {};
    struct statvfs limits = {};
    if (statx(file, "", AT_EMPTY_PATH, STATX_BASIC_STATS | Disks::kMountNumber, &identity) != 0 ||
        fstatvfs(file, &limits) != 0) {
        return SystemStatus(errno);
    }
    facts = {};
    facts.isReadOnly = (limits.f_flag & ST_RDONLY) != 0;
    const std::optional<Mount> mount = Disks::MountOf(identity);
    facts.fileSystem = mount ? mount->fileSystem : "";
    facts.largestFile = LargestFile(facts.fileSystem);
    if (const auto share = mount ? ShareOf(*mount) : std::nullopt) {
        facts.server = share->server;
        // One of this machine's own may lie on any of its disks.
        if (!IsOwnServer(share->server, HostName()) && !IsOwnAddress(share->server)) {
            facts.disks = {share->share};
        }
        return {};
    }
    Disks disks;
    if (disks.AddBehindMount(identity, mount, 0)) {
        facts.disks = std::move(disks.found);
    }
    return {};
}

} // namespace nqp2::platform
