// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_import.h"

#include "nqp2/clip_hint.h"
#include "NQP2ParserU/Interrupt.h"
#include "NQP2ParserU/TextBytes.h"
#include "NQP2ParserU/WorkerFields.h"

#include <fmt/core.h>

#include <algorithm>

namespace nqp2::tool {
namespace {

class Run {
public:
    Run(WorkerSession& session, TransferWatch& watch, const ImportPlan& plan)
        : m_session(session), m_watch(watch), m_plan(plan) {}

    /// False when there is no worker any more.
    bool Import(ImportedClip& one, const ImportTarget& target) {
        const std::string label = m_plan.LabelOf(*one.clip);
        Fill(one, target);
        m_watch.Begin(label);
        const bool done = m_session->ImportFile(one.info) == 0;
        const TransferFields fields(one.info);
        m_watch.End(done ? FileSum{fields.files, fields.bytes} : FileSum());
        const std::string sentence = m_session.Sentence();
        one.fate = done ? ClipFate::Imported : ClipFate::Refused;
        if (done && (fields.flags & kWasIncomplete) != 0) {
            TellIncomplete(m_watch.Shown(), label, sentence);
        }
        if (!done) {
            one.failure = sentence.empty() ? kNoWorker : WithHint(sentence, HintFor(*one.clip));
            m_watch.Shown().Fail(label, "", fmt::format("not imported ({})", one.failure));
        }
        return done || !sentence.empty();
    }

private:
    [[nodiscard]] std::string HintFor(const PlannedClip& clip) const {
        return WasInterrupted() ? "" : ClipHint(m_plan.cards[clip.card].card, {clip.name});
    }

    void Fill(ImportedClip& one, const ImportTarget& target) const {
        const TransferFields request(one.info);
        request.cardRoot = WorkerPath(m_plan.cards[one.clip->card].card.Argument());
        request.clipName = TextFromBytes(one.clip->name);
        request.folder = WorkerPath(target.folder);
        request.flags = target.incomplete ? kTakeIncomplete : 0;
    }

    WorkerSession& m_session;
    TransferWatch& m_watch;
    const ImportPlan& m_plan;
};

} // namespace

std::vector<const ImportedClip*> ImportRun::With(ClipFate fate) const {
    std::vector<const ImportedClip*> found;
    for (const ImportedClip& one : clips) {
        if (one.fate == fate) {
            found.push_back(&one);
        }
    }
    return found;
}

ImportRun ImportClips(WorkerSession& session, TransferWatch& watch, const ImportPlan& plan,
                      const ImportTarget& target, const TellImported& tell) {
    ImportRun result;
    for (const PlannedClip& clip : plan.clips) {
        result.clips.emplace_back().clip = &clip;
    }
    Run run(session, watch, plan);
    watch.BeginRun("import", plan.Size());
    for (ImportedClip& one : result.clips) {
        if (WasInterrupted() || result.hasLostWorker) {
            break;
        }
        result.hasLostWorker = !run.Import(one, target);
        if (one.fate == ClipFate::Imported) {
            tell(one);
        }
    }
    watch.EndRun();
    return result;
}

} // namespace nqp2::tool
