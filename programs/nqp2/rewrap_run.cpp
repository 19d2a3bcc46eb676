// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/rewrap_run.h"

#include "NQP2ParserU/Interrupt.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <cstddef>
#include <utility>

namespace nqp2::tool {
namespace {

void Refuse(TransferWatch& watch, RewrappedFile& file, const std::string& why) {
    file.fate = FileFate::Refused;
    file.failure = why;
    watch.Shown().Fail(file.plan->name, "", fmt::format("not written ({})", why));
}

/// False when there is no worker any more.
bool Make(WorkerSession& session, TransferWatch& watch, RewrappedFile& file) {
    watch.Begin(file.plan->name);
    const RewrapStatus status = Rewrap(*session.operator->(), file.plan->request, file.result);
    const bool isWritten = status == RewrapStatus::Written;
    watch.End(isWritten ? FileSum{1, file.plan->bytes} : FileSum());
    switch (status) {
    case RewrapStatus::Written:
        file.fate = FileFate::Written;
        break;
    case RewrapStatus::Cancelled:
        Refuse(watch, file, "cancelled");
        break;
    case RewrapStatus::Refused:
        Refuse(watch, file, session.Sentence());
        break;
    case RewrapStatus::NoWorker:
        Refuse(watch, file, kNoWorker);
        return false;
    }
    return true;
}

FileSum SizeOf(const RewrapRun& run) {
    FileSum sum;
    for (const RewrappedFile& file : run.files) {
        if (file.plan->IsPossible()) {
            sum += {1, file.plan->bytes};
        }
    }
    return sum;
}

/// The first of the names, and how many there are more.
std::string NamesOf(const std::vector<const RewrappedFile*>& files) {
    constexpr std::size_t kShown = 8;
    std::vector<std::string> names;
    for (const RewrappedFile* const file : files) {
        if (names.size() < kShown) {
            names.push_back(file->plan->name);
        }
    }
    return fmt::format("{}{}", fmt::join(names, ", "),
                       files.size() <= kShown ? ""
                                              : fmt::format(" and {} more", files.size() - kShown));
}

} // namespace

std::vector<const RewrappedFile*> RewrapRun::With(FileFate fate) const {
    std::vector<const RewrappedFile*> found;
    for (const RewrappedFile& file : files) {
        if (file.fate == fate) {
            found.push_back(&file);
        }
    }
    return found;
}

RewrapRun NewRun(const std::vector<rewrap::Plan>& plans) {
    RewrapRun run;
    for (const rewrap::Plan& plan : plans) {
        RewrappedFile& file = run.files.emplace_back();
        file.plan = &plan;
        file.fate = plan.IsPossible() ? FileFate::Left : FileFate::Refused;
        file.failure = plan.failure;
    }
    return run;
}

void RewrapFiles(WorkerSession& session, TransferWatch& watch, RewrapRun& run,
                 const TellRewrapped& tell) {
    watch.BeginRun("rewrap", SizeOf(run));
    for (RewrappedFile& file : run.files) {
        if (WasInterrupted() || run.hasLostWorker) {
            break;
        }
        if (file.fate != FileFate::Left) {
            continue;
        }
        run.hasLostWorker = !Make(session, watch, file);
        if (file.fate == FileFate::Written) {
            tell(file);
        }
    }
    watch.EndRun();
}

void TellPlans(RunProgress& shown, const RewrapRun& run, const std::vector<Loss>& losses) {
    for (const Loss& loss : losses) {
        shown.Fail(loss.name, "", loss.reason);
    }
    for (const RewrappedFile& file : run.files) {
        for (const std::string& remark : file.plan->remarks) {
            shown.Remark(fmt::format("{}: {}", file.plan->name, remark));
        }
        if (!file.plan->IsPossible()) {
            shown.Fail(file.plan->name, "", fmt::format("not written ({})", file.failure));
        }
    }
}

void TellEnd(RunProgress& shown, const RewrapRun& run) {
    std::string text =
        fmt::format("{} of {} files written", run.With(FileFate::Written).size(), run.files.size());
    constexpr std::pair<FileFate, const char*> kOthers[] = {{FileFate::Refused, "failed"},
                                                            {FileFate::Left, "not begun"}};
    for (const auto& [fate, words] : kOthers) {
        if (const auto others = run.With(fate); !others.empty()) {
            text += fmt::format("; {}: {}", words, NamesOf(others));
        }
    }
    shown.Remark(text);
}

} // namespace nqp2::tool
