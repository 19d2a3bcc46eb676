// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/RealPaths.h"

#include "NQP2ParserU/PathText.h"
#include "platform/place.h"
#include "platform/unicode.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <map>
#include <numeric>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace nqp2 {

namespace {

/// Whoever asks for more files of a folder lists one of them after the other: it is read once.
constexpr int kFewFiles = 16;

bool IsPlainName(std::wstring_view name) {
    return !name.empty() && std::none_of(name.begin(), name.end(),
                                         [](wchar_t ch) { return ch == L'\0' || ch == L':'; });
}

/// Characters of a path up to its last separator.
std::size_t FolderLength(std::wstring_view path) {
    const auto last = std::find_if(path.rbegin(), path.rend(),
                                   [](wchar_t ch) { return ch == L'\\' || ch == L'/'; });
    return static_cast<std::size_t>(path.rend() - last);
}

bool Exists(const std::string& path) {
    platform::FileInfo info;
    return !path.empty() && platform::Files().Stat(path, info);
}

} // namespace

struct RealPaths::Cache {
    /// The names in a folder, sorted: who asks for them in their order finds one beside the other.
    class SortedNames {
    public:
        /// Of a folder that cannot be read to its end it has those that came.
        void Read(const std::string& folder) {
            m_starts.reserve(Pack(folder));
            std::vector<Head> heads = Heads();
            std::sort(heads.begin(), heads.end(), [this](const Head& left, const Head& right) {
                return left.bytes == right.bytes ? NameFrom(left.start) < NameFrom(right.start)
                                                 : left.bytes < right.bytes;
            });
            std::transform(heads.begin(), heads.end(), std::back_inserter(m_starts),
                           [](const Head& head) { return head.start; });
        }
        bool Has(std::string_view name) {
            for (int step = 0; step < kSteps && m_next < m_starts.size(); ++step, ++m_next) {
                const int order = NameAt(m_next).compare(name);
                if (order == 0) {
                    return true;
                }
                if (order > 0) {
                    break;
                }
            }
            m_next = FirstFrom(name);
            return m_next < m_starts.size() && NameAt(m_next) == name;
        }

    private:
        static constexpr int kSteps = 8; ///< more than a clip has files in a folder, mostly
        static_assert(platform::kMaxFolderEntries <= UINT32_MAX / 1024,
                      "names, each shorter than 1,024 bytes, are counted in 32 bits together");

        /// The first bytes of a name as one number, in their order, which spares most comparisons a
        /// look at the names.
        struct Head {
            std::uint64_t bytes;
            std::uint32_t start;
        };
        static std::uint64_t HeadOf(std::string_view name) {
            std::uint64_t bytes = 0;
            for (std::size_t i = 0; i < sizeof(bytes); ++i) {
                const char byte = i < name.size() ? name[i] : '\0';
                bytes = bytes << 8U | static_cast<unsigned char>(byte);
            }
            return bytes;
        }
        /// Room for a large folder at once: where a list grows, it is there twice for a moment.
        static std::size_t LikelyCount(const std::string& folder) {
            constexpr std::uint64_t kBytesOfEntry = 20; // or a little more, where a size is told
            constexpr std::uint64_t kMost = 100'000;
            platform::FileInfo info;
            return platform::Files().Stat(folder, info) ? std::min(info.size / kBytesOfEntry, kMost)
                                                        : 0;
        }
        /// Takes the folder's names as they come and tells how many; its listing, which takes far
        /// more room, is gone before they are sorted.
        std::size_t Pack(const std::string& folder) {
            std::vector<platform::FolderEntry> entries;
            entries.reserve(LikelyCount(folder));
            static_cast<void>(platform::Files().List(folder, entries));
            m_text.reserve(std::accumulate(
                entries.begin(), entries.end(), std::size_t{0},
                [](std::size_t sum, const auto& entry) { return sum + entry.name.size() + 1; }));
            for (const platform::FolderEntry& entry : entries) {
                m_text.append(entry.name.c_str(), entry.name.size() + 1);
            }
            return entries.size();
        }
        [[nodiscard]] std::vector<Head> Heads() const {
            std::vector<Head> heads;
            heads.reserve(m_starts.capacity());
            for (std::size_t start = 0; start < m_text.size();) {
                const std::string_view name = NameFrom(static_cast<std::uint32_t>(start));
                heads.push_back({HeadOf(name), static_cast<std::uint32_t>(start)});
                start += name.size() + 1;
            }
            return heads;
        }
        [[nodiscard]] std::string_view NameFrom(std::uint32_t start) const {
            return m_text.c_str() + start;
        }
        [[nodiscard]] std::string_view NameAt(std::size_t number) const {
            return NameFrom(m_starts[number]);
        }
        /// The number of the first name that is not before `name`.
        [[nodiscard]] std::size_t FirstFrom(std::string_view name) const {
            std::size_t first = 0;
            std::size_t end = m_starts.size();
            while (first < end) {
                const std::size_t middle = first + (end - first) / 2;
                if (NameAt(middle) < name) {
                    first = middle + 1;
                } else {
                    end = middle;
                }
            }
            return first;
        }

        std::string m_text;                  ///< the names, a zero behind each
        std::vector<std::uint32_t> m_starts; ///< of each in it, sorted by the names
        std::size_t m_next = 0;              ///< where the answer before was found
    };

    struct Folder {
        explicit Folder(platform::Place found) : place(std::move(found)) {}

        platform::Place place;
        int questions = 0;
        std::string asked;      ///< PosixPath's answer with a separator at its end, or "",
        bool isAsAsked = false; ///< and whether it leads there
        SortedNames names;      ///< of a folder of which much is asked
    };
    std::map<std::wstring, Folder, std::less<>> folders;

    /// A folder, its place from the one above it: each folder on the way is listed once.
    Folder& FolderOf(std::wstring_view folder) {
        const auto known = folders.find(folder);
        if (known != folders.end()) {
            return known->second;
        }
        const std::size_t end = folder.find_last_not_of(L'\\') + 1;
        const std::size_t start = folder.substr(0, end).find_last_of(L'\\') + 1;
        platform::Place place =
            start == 0
                ? platform::Place(CString(folder))
                : FolderOf(folder.substr(0, start)).place.Below(CString(folder.substr(start)));
        return folders.emplace(folder, std::move(place)).first->second;
    }
    /// The answer from the names of a folder of which much is asked; nothing where the disk is to
    /// be asked.
    std::optional<std::string> FromNames(std::wstring_view path) {
        const std::size_t start = FolderLength(path);
        const std::wstring_view name = path.substr(start);
        if (start == 0 || !IsPlainName(name)) {
            return std::nullopt;
        }
        Folder& folder = FolderOf(path.substr(0, start));
        if (folder.questions < kFewFiles) {
            if (++folder.questions < kFewFiles) {
                return std::nullopt;
            }
            Look(folder, path.substr(0, start));
        }
        return AmongNames(folder, platform::NameBytesFromText(name));
    }
    static void Look(Folder& folder, std::wstring_view written) {
        // Without a drive part a name may end one: then it is more than a name.
        if (written.find(L":\\") == std::wstring_view::npos) {
            return;
        }
        folder.asked = PosixPath(CString(written));
        folder.isAsAsked = Exists(folder.asked);
        folder.names.Read(folder.place.OnDisk());
    }
    static std::optional<std::string> AmongNames(Folder& folder, const std::string& name) {
        const bool isThere = folder.names.Has(name);
        if (isThere && folder.isAsAsked) {
            return folder.asked + name;
        }
        return isThere ? std::optional(folder.place.OnDisk() + '/' + name) : std::nullopt;
    }
};

RealPaths::RealPaths() : m_cache(std::make_unique<Cache>()) {}

RealPaths::~RealPaths() = default;

std::string RealPaths::Find(const CString& path) {
    if (path.IsEmpty()) {
        return {};
    }
    if (std::optional<std::string> known = m_cache->FromNames(path.View())) {
        return *std::move(known);
    }
    std::string asked = PosixPath(path);
    platform::FileInfo info;
    if (asked.empty() || platform::Files().Stat(asked, info)) {
        return asked;
    }
    const platform::PathParts parts = platform::SplitPath(path);
    const platform::Place folder = m_cache->FolderOf(parts.folder.Written().View()).place;
    if (parts.name.IsEmpty()) {
        return folder.Exists() ? folder.OnDisk() + '/' : asked;
    }
    platform::FoundFile found;
    return folder.Find(parts.name, found) ? found.posixPath : asked;
}

} // namespace nqp2
