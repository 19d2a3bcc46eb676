// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/mhl/history_state.h"

#include <functional>
#include <string>
#include <utility>

namespace nqp2::mhl {

/// Takes the records of one manifest into what is expected, in the order of the generations.
class RecordTaker final : public ManifestHandler {
public:
    using Tell = std::function<void(bool isFault, int line, std::string sentence)>;

    /// `generation`: of the part, from 1.
    RecordTaker(HistoryState& state, HistoryPart& part, std::uint32_t generation, Tell tell)
        : m_state(state), m_part(part), m_generation(generation), m_tell(std::move(tell)) {}

    void OnFile(const FileRecord& record) override;
    void OnFolder(const FolderRecord& record) override;
    void OnReference(const Reference& reference) override;
    void OnFinding(bool isFault, int line, std::string sentence) override;
    void TakeHead(const ManifestHead& head);

private:
    /// The path below the outermost scope; "" for one that another history answers for.
    [[nodiscard]] std::string OwnPath(const std::string& path) const;
    /// The node of a record, with the folders above it; kNoNode after a fault.
    NodeId Take(const std::string& path, bool isFolder, int line);
    NodeId Reach(std::string_view path, bool isFolder);
    /// A file's hashes and size. Those that failed once say nothing of what is expected.
    void Merge(NodeId file, const FileRecord& record);
    /// What had the path before has it no more.
    void LeaveBehind(NodeId now, const std::string& previousPath);

    HistoryState& m_state;
    HistoryPart& m_part;
    std::uint32_t m_generation;
    Tell m_tell;
};

} // namespace nqp2::mhl
