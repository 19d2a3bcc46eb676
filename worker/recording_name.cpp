// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/recording_name.h"

#include "worker/card_folder.h"
#include "worker/free_clip_name.h"

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

namespace nqp2::worker {
namespace {

/// Names of recordings that run, with the contents folders of their cards.
struct Running {
    std::mutex mutex;
    std::vector<std::pair<std::string, CString>> names;
};

/// Never destroyed: sessions may outlive static objects.
Running& AllRunning() {
    static auto& running = *new Running;
    return running;
}

} // namespace

Outcome RecordingName::Take(const std::string& contents, const CString& wanted) {
    Release();
    ClipNames taken;
    Running& running = AllRunning();
    const std::lock_guard lock(running.mutex);
    if (Outcome outcome = taken.Read(contents); !outcome) {
        return outcome;
    }
    for (const auto& [card, name] : running.names) {
        if (card == contents) {
            taken.Take(name);
        }
    }
    CString name = wanted;
    Outcome outcome = wanted.IsEmpty() ? taken.FindFree(L"0000AA", name) : CheckClipName(wanted);
    if (outcome && taken.IsTaken(name)) {
        outcome = Failure("There is a clip " + Shown(name) + " on the card already.");
    }
    if (!outcome) {
        return outcome;
    }
    m_contents = contents;
    m_name = name;
    running.names.emplace_back(m_contents, m_name);
    return {};
}

void RecordingName::Release() {
    if (m_name.IsEmpty()) {
        return;
    }
    Running& running = AllRunning();
    const std::lock_guard lock(running.mutex);
    const auto own =
        std::find(running.names.begin(), running.names.end(), std::make_pair(m_contents, m_name));
    if (own != running.names.end()) {
        running.names.erase(own);
    }
    m_name.Empty();
}

} // namespace nqp2::worker
