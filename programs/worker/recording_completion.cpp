// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/recording.h"

#include <memory>
#include <system_error>
#include <utility>

namespace nqp2::worker {

void Recording::Complete(const ClipMaker& clip, const std::function<void()>& completion) {
    try {
        completion();
        m_completed.push_back(clip.Name());
    } catch (const std::exception&) {
        m_trouble = m_trouble ? m_trouble : std::current_exception();
    }
}

void Recording::WaitForOther() {
    if (m_other.valid()) {
        Complete(*m_otherClip, [this] { m_other.get(); });
    }
    m_otherClip.reset();
}

std::unique_ptr<ClipMaker> Recording::TakeFirst(Relations& relations) {
    std::unique_ptr<ClipMaker> clip = std::move(m_clips.front());
    m_clips.pop_front();
    relations = m_parameters.relations;
    const bool isLast = m_clips.empty();
    if (m_previous) {
        relations.previous = m_previous;
        relations.top = relations.top ? relations.top : m_top;
    }
    if (!isLast) {
        relations.next = m_clips.front()->Self();
    }
    if (m_previous || !isLast) {
        relations.offsetInShot = clip->FramesBefore();
    }
    m_previous = clip->Self();
    m_top = m_top ? m_top : m_previous;
    return clip;
}

/// To flush and read back gigabytes takes longer than a stream can wait.
void Recording::CompleteFull() {
    while (m_clips.size() > 1 && m_clips[0]->IsFull() && m_clips[1]->Frames() != 0 &&
           (m_clips[0]->SoundRoom() == 0 || m_parameters.wave.nChannels == 0 ||
            m_clips.size() > kMostClipsAtOnce)) {
        WaitForOther();
        Relations relations;
        m_otherClip = TakeFirst(relations);
        const auto finish = [clip = m_otherClip.get(), relations] { clip->Finish(relations); };
        try {
            m_other = std::async(std::launch::async, finish);
        } catch (const std::system_error&) { // no thread for it
            Complete(*m_otherClip, finish);
            m_otherClip.reset();
        }
    }
}

void Recording::Finish() {
    if (m_isOver) {
        return;
    }
    m_isOver = true;
    while (!m_clips.empty() && m_clips.back()->Frames() == 0) {
        m_clips.pop_back();
    }
    const bool isEmpty = m_clips.empty();
    WaitForOther();
    while (!m_clips.empty()) {
        Relations relations;
        const std::unique_ptr<ClipMaker> clip = TakeFirst(relations);
        Complete(*clip, [&] { clip->Finish(relations); });
    }
    if (isEmpty) {
        throw copy::Failure("No frame was recorded.");
    }
    if (m_trouble) {
        std::rethrow_exception(m_trouble);
    }
}

void Recording::Drop() {
    m_isOver = true;
    m_clips.clear();
    WaitForOther();
}

} // namespace nqp2::worker
