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

/// What an option of a mount says: "rw,addr=10.0.0.1".
std::string OptionIn(std::string_view options, std::string_view name) {
    while (!options.empty()) {
        const std::string_view option = options.substr(0, options.find(','));
        if (option.starts_with(name)) {
            return std::string(option.substr(name.size()));
        }
        options.remove_prefix(std::min(option.size() + 1, options.size()));
    }
    return "";
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
    mount.address = OptionIn(NextWord(line), "addr=");
    return mount;
}

std::string InSmallLetters(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

NetworkShare SplitSlashes(const Mount& mount) {
    const std::string text = InSmallLetters(mount.source);
    const std::size_t begin = std::min(text.find_first_not_of('/'), text.size());
    const std::size_t share = std::min(text.find('/', begin), text.size());
    const std::size_t end = text.find('/', std::min(share + 1, text.size()));
    const std::string server =
        mount.address.empty() ? text.substr(begin, share - begin) : mount.address;
    return {server,
            "//" + server + text.substr(share, end == std::string::npos ? end : end - share)};
}

/// Who logs in there says nothing about where it is.
NetworkShare SplitColon(const Mount& mount) {
    const std::string& source = mount.source;
    const std::size_t colon = std::min(source.find(":/"), source.size());
    const std::size_t user = source.substr(0, colon).rfind('@') + 1;
    const std::string server =
        mount.address.empty() ? InSmallLetters(source.substr(user, colon - user)) : mount.address;
    return {server, server + source.substr(colon)};
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

bool IsOwnServer(const std::string& server, const std::string& ownName) {
    const std::string own = InSmallLetters(ownName);
    const auto shortName = [](const std::string& name) { return name.substr(0, name.find('.')); };
    return server == "localhost" || server.starts_with("127.") || server == "::1" ||
           server == "[::1]" || (!own.empty() && shortName(server) == shortName(own));
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
        return SplitSlashes(mount);
    case Writing::Colon:
        return SplitColon(mount);
    case Writing::Whole:
        break;
    }
    return NetworkShare{mount.source, mount.source};
}

} // namespace nqp2::platform
