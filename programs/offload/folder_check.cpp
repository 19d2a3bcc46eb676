// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/folder_check.h"

#include <string>
#include <vector>

namespace nqp2::offload {
namespace {

using mhl::NodeId;

class Explanations {
public:
    Explanations(const mhl::History& history, const mhl::Tree& present)
        : m_expected(history.Expected()), m_present(present), m_isExplained(present.Size()) {}

    [[nodiscard]] bool Hold(NodeId folder) const { return m_isExplained[folder]; }

    /// Something is different there: so are all folders above it.
    void AddAbove(NodeId node) {
        for (NodeId folder = m_present.ParentOf(node);
             folder != mhl::kNoNode && !m_isExplained[folder];
             folder = m_present.ParentOf(folder)) {
            m_isExplained[folder] = true;
        }
    }
    /// The same of what is expected; it may not be there, nor its folder.
    void AddAboveExpected(NodeId node) {
        NodeId here = mhl::kNoNode;
        for (NodeId folder = node; folder != mhl::kScope && here == mhl::kNoNode;) {
            folder = m_expected.ParentOf(folder);
            here = m_present.Find(m_expected.PathOf(folder));
        }
        if (here != mhl::kNoNode && m_present.IsFolder(here)) {
            m_isExplained[here] = true;
            AddAbove(here);
        }
    }

private:
    const mhl::Tree& m_expected;
    const mhl::Tree& m_present;
    std::vector<bool> m_isExplained;
};

} // namespace

void KeepUnexplainedFolders(const mhl::History& history, const mhl::Tree& present,
                            mhl::Comparison& comparison) {
    if (comparison.changedFolders.empty()) {
        return;
    }
    Explanations explanations(history, present);
    for (const auto* const nodes :
         {&comparison.changed, &comparison.unproven, &comparison.added, &comparison.addedFolders}) {
        for (const NodeId node : *nodes) {
            explanations.AddAbove(node);
        }
    }
    for (const mhl::Renamed& each : comparison.renamed) {
        explanations.AddAbove(each.now);
        explanations.AddAboveExpected(each.before);
    }
    for (const auto* const nodes : {&comparison.missing, &comparison.missingFolders}) {
        for (const NodeId node : *nodes) {
            explanations.AddAboveExpected(node);
        }
    }
    const mhl::Tree& expected = history.Expected();
    for (NodeId node = 0; node < expected.Size(); ++node) {
        if (!expected.IsFolder(node) && history.IsExpected(node) && !history.IsInNewest(node)) {
            explanations.AddAboveExpected(node);
        }
    }
    std::erase_if(comparison.changedFolders,
                  [&](NodeId folder) { return explanations.Hold(folder); });
}

} // namespace nqp2::offload
