// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/medium.h"

#include "catalogue/words.h"
#include "console/utf8_text.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/TextBytes.h"
#include "platform/folder.h"
#include "platform/host_name.h"
#include "platform/medium.h"
#include "platform/volume.h"

#include <fmt/core.h>

#include <charconv>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <system_error>

namespace nqp2::catalogue {
namespace {

std::uint64_t DeviceOf(const std::string& path) {
    platform::FileInfo info;
    return platform::Files().Stat(path, info) ? info.device : 0;
}

/// The whole path, and where the file system that it is on is mounted.
struct Mounted {
    std::string path;
    std::string top;

    [[nodiscard]] std::string Below() const { return path.substr(top == "/" ? 0 : top.size()); }
};

Mounted MountOf(const std::string& folder) {
    std::error_code error;
    const std::filesystem::path whole = std::filesystem::weakly_canonical(folder, error);
    Mounted mounted = {error ? folder : whole.native(), ""};
    mounted.top = mounted.path;
    std::uint64_t device = DeviceOf(mounted.top);
    while (device == 0 && mounted.top != "/") { // nothing is there
        mounted.top = std::filesystem::path(mounted.top).parent_path().native();
        device = DeviceOf(mounted.top);
    }
    while (mounted.top != "/") {
        const std::string above = std::filesystem::path(mounted.top).parent_path().native();
        if (above == mounted.top || DeviceOf(above) != device) {
            break;
        }
        mounted.top = above;
    }
    return mounted;
}

/// "server:/share" of a folder that comes over a network; "" else.
std::string ShareOf(const std::string& folder) {
    std::unique_ptr<platform::Folder> opened;
    platform::MediumFacts facts;
    const bool isTold = platform::Files().OpenFolder(folder, opened) && opened->Medium(facts) &&
                        !facts.server.empty() && !facts.disks.empty();
    return isTold ? facts.disks.front() : std::string();
}

bool IsKept(std::string_view character, bool isWhole) {
    return isWhole && character != "%" && static_cast<unsigned char>(character.front()) >= 0x20;
}

std::string LongKeyOfCopyAt(const std::string& folder) {
    const Mounted mounted = MountOf(folder);
    const std::string below = StoredPath(mounted.Below());
    const std::string volume = platform::VolumeName(mounted.top, platform::kVolumeSerials);
    if (!volume.empty()) {
        return fmt::format("folder of {}: {}", StoredPath(volume), below);
    }
    if (const std::string share = ShareOf(mounted.top); !share.empty()) {
        return fmt::format("folder of {}: {}", StoredPath(share), below);
    }
    return fmt::format("folder at {}: {}", StoredPath(platform::HostName()),
                       StoredPath(mounted.path));
}

} // namespace

Medium MediumOf(const FoundCard& card) {
    return card.serialNo.IsEmpty()
               ? Medium{KeyOfCopyAt(PosixPath(card.root)), false}
               : Medium{KeyText("volume " + StoredPath(BytesFromText(card.serialNo))), true};
}

std::string KeyOfCopyAt(const std::string& folder) {
    return KeyText(LongKeyOfCopyAt(folder));
}

std::string StoredPath(std::string_view path) {
    std::string stored;
    while (!path.empty()) {
        const tool::Utf8Character first = tool::FirstUtf8(path);
        const std::string_view character = path.substr(0, first.length);
        if (IsKept(character, first.isWhole)) {
            stored.append(character);
        } else {
            for (const char byte : character) {
                stored += fmt::format("%{:02X}", static_cast<unsigned char>(byte));
            }
        }
        path.remove_prefix(first.length);
    }
    return stored;
}

std::string PathOfStored(std::string_view stored) {
    constexpr std::size_t kDigits = 2;
    std::string path;
    for (std::size_t i = 0; i < stored.size(); ++i) {
        unsigned char byte = 0;
        const char* const digits = stored.data() + i + 1;
        if (stored[i] == '%' && i + kDigits < stored.size() &&
            std::from_chars(digits, digits + kDigits, byte, 16).ptr == digits + kDigits) {
            path += static_cast<char>(byte);
            i += kDigits;
        } else {
            path += stored[i];
        }
    }
    return path;
}

} // namespace nqp2::catalogue
