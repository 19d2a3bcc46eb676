// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/fan.h"
#include "copy/folder_way.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace nqp2::copy {

/// A file on its way to one target: compared with what has its name there, or else written under a
/// hidden one. Throws a Failure, or a TargetEnd.
class IncomingFile {
public:
    /// What it needs of its target, which outlives it.
    struct Place {
        WritingWay& way;
        std::uint64_t largestFile;
        std::uint64_t smallFile; ///< for larger ones it is asked whether they fit
        std::string& block;
        std::function<void(const FanItem&, const std::string& aside)> hasSetAside;
        /// Why what is there must not be set aside, or "".
        std::function<std::string(const FanItem&, platform::FileReader& there)> whyKept;
    };

    IncomingFile(Place& place, const FanItem& item);

    /// The bytes that come next.
    void Take(std::string_view bytes);
    /// All were taken. The file with its length and time, still hidden; null: it was there.
    std::unique_ptr<platform::FileWriter> End();

    [[nodiscard]] const std::string& Path() const { return m_path; }
    [[nodiscard]] const std::shared_ptr<platform::Folder>& Folder() const { return m_folder; }
    /// Whether something else had its name.
    [[nodiscard]] bool IsAnew() const { return m_isAnew; }

private:
    /// What is there may be the file: opens it, unless it cannot be.
    void OpenOld();
    /// Whether the next bytes of what is there are these.
    bool HasNext(std::string_view bytes);
    /// What is there is not the file: writes the file, of which the bytes so far were the same.
    void BecomeNew();
    void RequireReplaceable();
    std::string SetAside();
    void Create();
    void CopyBeginning(const std::string& from);

    Place& m_place;
    const FanItem& m_item;
    FolderWay::Step& m_step;
    std::shared_ptr<platform::Folder> m_folder;
    std::string m_name;
    std::string m_path;
    std::uint64_t m_position = 0;
    std::unique_ptr<platform::FileReader> m_old;
    std::unique_ptr<platform::FileWriter> m_writer;
    bool m_isAnew = false;
};

} // namespace nqp2::copy
