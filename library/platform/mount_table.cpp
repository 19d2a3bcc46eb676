// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/mount_table.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace nqp2::platform {
namespace {

/// How file systems of networks write what they show.
enum class Writing {
    Slashes, ///< "//server/share/below", without letter case
    Colon,   ///< "server:/export"
    Whole,   ///< neither: all of it stands for the server
};

struct NetworkKind {
    std::string_view fileSystem;
    Writing writing;
};

constexpr NetworkKind kNetworkKinds[] = {
    {"nfs", Writing::Colon},         {"nfs4", Writing::Colon},
    {"ceph", Writing::Colon},        {"glusterfs", Writing::Colon},
    {"fuse.sshfs", Writing::Colon},  {"fuse.glusterfs", Writing::Colon},
    {"cifs", Writing::Slashes},      {"smb3", Writing::Slashes},
    {"smbfs", Writing::Slashes},     {"ncpfs", Writing::Whole},
    {"fuse.rclone", Writing::Whole}, {"fuse.davfs", Writing::Whole},
    {"afs", Writing::Whole},
};

std::string_view NextWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(word.size());
    return word;
}

bool IsOctal(char digit) {
    return digit >= '0' && digit <= '7';
}

/// Blanks and the like are written as a backslash and three octal digits.
std::string Unescaped(std::string_view word) {
    std::string text;
    while (!word.empty()) {
        constexpr std::size_t kEscape = 4;
        if (word.front() == '\\' && word.size() >= kEscape &&
            std::all_of(word.begin() + 1, word.begin() + kEscape, IsOctal)) {
            text.push_back(
                static_cast<char>((word[1] - '0') * 64 + (word[2] - '0') * 8 + (word[3] - '0')));
            word.remove_prefix(kEscape);
        } else {
            text.push_back(word.front());
            word.remove_prefix(1);
        }
    }
    return text;
}

/// The mount that a line tells of, if it is the one: "36 35 98:0 / /mnt rw - ext4 /dev/sda1 rw".
std::optional<Mount> MountOf(std::string_view line, std::optional<std::uint64_t> number,
                             std::string_view device) {
    const std::string_view ownNumber = NextWord(line);
    NextWord(line); // the mount above
    const std::string_view ownDevice = NextWord(line);
    if (number ? ownNumber != std::to_string(*number) : ownDevice != device) {
        return {};
    }
    const std::size_t end = line.find(" - ");
    if (end == std::string_view::npos) {
        return {};
    }
    line.remove_prefix(end + 3);
    Mount mount;
    mount.fileSystem = NextWord(line);
    mount.source = Unescaped(NextWord(line));
    return mount;
}

std::string InSmallLetters(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

NetworkShare SplitSlashes(const std::string& source) {
    const std::string text = InSmallLetters(source);
    const std::size_t server = std::min(text.find_first_not_of('/'), text.size());
    const std::size_t share = std::min(text.find('/', server), text.size());
    const std::size_t end = text.find('/', std::min(share + 1, text.size()));
    return {text.substr(server, share - server), text.substr(0, end)};
}

NetworkShare SplitColon(const std::string& source) {
    const std::size_t colon = source.find(":/");
    const std::string server = InSmallLetters(source.substr(0, colon));
    const std::string share = colon == std::string::npos ? "" : source.substr(colon);
    return {server, server + share};
}

} // namespace

std::optional<Mount> FindMount(std::string_view table, std::optional<std::uint64_t> number,
                               std::string_view device) {
    while (!table.empty()) {
        const std::string_view line = table.substr(0, table.find('\n'));
        table.remove_prefix(std::min(line.size() + 1, table.size()));
        if (auto mount = MountOf(line, number, device)) {
            return mount;
        }
    }
    return {};
}

std::optional<NetworkShare> ShareOf(const Mount& mount) {
    const auto* const kind =
        std::find_if(std::begin(kNetworkKinds), std::end(kNetworkKinds),
                     [&](const NetworkKind& each) { return each.fileSystem == mount.fileSystem; });
    if (kind == std::end(kNetworkKinds) || mount.source.empty()) {
        return {};
    }
    switch (kind->writing) {
    case Writing::Slashes:
        return SplitSlashes(mount.source);
    case Writing::Colon:
        return SplitColon(mount.source);
    case Writing::Whole:
        break;
    }
    return NetworkShare{mount.source, mount.source};
}

} // namespace nqp2::platform
