// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/folder.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::copy {

/// "CONTENTS/VIDEO" of "CONTENTS/VIDEO/0001AB.MXF".
std::string_view FolderPathOf(std::string_view path);

/// The way to folders below a root, one after another: by their exact names, through no link, and
/// with no more asked than differs from the folder before. Throws a Failure.
class FolderWay {
public:
    struct Step {
        std::string name;
        std::shared_ptr<platform::Folder> folder;
        /// What was in it when it was reached, where the way keeps that.
        std::map<std::string, platform::EntryKind, std::less<>> names;
    };

    FolderWay() = default;
    virtual ~FolderWay() = default;
    FolderWay(const FolderWay&) = delete;
    FolderWay& operator=(const FolderWay&) = delete;

    /// "CONTENTS/VIDEO", or "" for the root. Valid until the next call.
    Step& Reach(std::string_view path);

protected:
    /// Opens a folder in the one above.
    virtual void Enter(Step& above, Step& step) = 0;

    std::vector<Step> m_steps; ///< the root first
};

/// For reading. The root outlives it.
class ReadingWay final : public FolderWay {
public:
    explicit ReadingWay(platform::Folder& root);

private:
    void Enter(Step& above, Step& step) override;
};

/// For writing: what is missing is made.
class WritingWay final : public FolderWay {
public:
    /// Opens the root, an absolute path, which is made when it is missing.
    explicit WritingWay(const std::string& root);
    explicit WritingWay(std::shared_ptr<platform::Folder> root);

    [[nodiscard]] platform::Folder& Root() { return *m_steps.front().folder; }
    /// Says that a folder has got a name that is not flushed.
    void Touch(const std::shared_ptr<platform::Folder>& folder);
    /// Brings the names onto the medium.
    void FlushNames();
    /// Of FlushAll, which has done that.
    void ForgetTouched();

private:
    void Enter(Step& above, Step& step) override;
    /// What killed writers have left goes, what is there else is remembered.
    static void LookInto(Step& step);

    std::vector<std::shared_ptr<platform::Folder>> m_touched;
    bool m_hasTouchedMore = false; ///< than these few
};

} // namespace nqp2::copy
