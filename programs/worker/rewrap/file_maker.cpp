// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/rewrap/file_maker.h"

#include "copy/failure.h"
#include "copy/new_file.h"
#include "copy/transaction.h"
#include "platform/unicode.h"
#include "worker/base/card_folder.h"
#include "worker/base/media_loader.h"
#include "worker/rewrap/file_plan.h"
#include "worker/rewrap/output_file.h"
#include "worker/rewrap/proof.h"
#include "worker/rewrap/unit_writer.h"

#include <algorithm>

namespace nqp2::worker::rewrap {
namespace {

/// How far a file has come, for its watch; what is asked all the while whether to go on.
class Progress {
public:
    explicit Progress(copy::Watch& watch) : m_watch(watch) {}

    void Expect(std::uint64_t bytes) { m_total = std::max<std::uint64_t>(bytes, 1); }
    void Step(std::size_t bytes) {
        m_halves += bytes;
        if (!GoesOn()) {
            throw copy::Cancelled();
        }
    }
    [[nodiscard]] bool GoesOn() {
        m_isCancelled = m_isCancelled || !m_watch.GoesOn(std::min(m_halves / 2, m_total), m_total);
        return !m_isCancelled;
    }
    void Finish() {
        m_halves = 2 * m_total;
        if (!GoesOn() || !m_watch.MayFinish(m_total)) {
            throw copy::Cancelled();
        }
    }
    [[nodiscard]] bool IsCancelled() const { return m_isCancelled; }

private:
    copy::Watch& m_watch;
    std::uint64_t m_halves = 0; ///< bytes read once or read back
    std::uint64_t m_total = 0;
    bool m_isCancelled = false;
};

void CheckPlace(platform::Folder& folder, const std::string& name) {
    std::string found;
    const platform::IoStatus status = FindIn(folder, name, found);
    if (status) {
        throw copy::Failure(platform::PathIn(folder.Path(), found) + " is there already.");
    }
    if (status.error != platform::IoError::NotFound) {
        throw copy::Failure("look for", platform::PathIn(folder.Path(), name), status);
    }
}

void CheckRoom(platform::Folder& folder, std::uint64_t bytes) {
    std::uint64_t free = 0;
    copy::Require(folder.UsableSpace(free), "ask for the free space of", folder.Path());
    if (copy::SpaceTaken(bytes) > free) {
        throw copy::Failure(copy::TooLittleSpace(folder.Path(), copy::SpaceTaken(bytes), free));
    }
    platform::MediumFacts medium;
    if (folder.Medium(medium) && bytes > medium.largestFile) {
        throw copy::Failure("The file would have about " + std::to_string(bytes) +
                            " bytes, and files in " + folder.Path() + " can have no more than " +
                            std::to_string(medium.largestFile) + ".");
    }
}

RewrapResult Make(const Request& request, Progress& progress) {
    const std::function<bool()> goesOn = [&] { return progress.GoesOn(); };
    copy::Transaction transaction;
    transaction.Open(RootOf(request.folder).OnDisk(), true);
    transaction.Reserve(request.file);
    transaction.Sweep("");
    CheckPlace(transaction.Root(), request.file);
    const std::unique_ptr<RecordingInput> input = request.join == RewrapJoin::Bytes
                                                      ? JoinBytes(request, goesOn)
                                                      : JoinFrames(request, goesOn);
    progress.Expect(input->Bytes());
    progress.Step(0);
    const PlannedFile plan = PlanFor(request, *input);
    CheckRoom(transaction.Root(), input->Bytes() + plan.file.headRoom);
    OutputFile output(transaction.Root(), request.file, goesOn);
    UnitWriter writer(request, plan, *input, output);
    MediaUnit unit;
    while (input->Next(unit)) {
        const std::size_t size = unit.bytes.size();
        writer.Put(unit);
        progress.Step(size);
    }
    writer.Finish();
    output.Flush();
    RewrapResult result;
    ProveWritten(plan, input->Tracks(), writer.Tallies(), output, result,
                 [&](std::size_t bytes) { progress.Step(bytes); });
    for (const std::vector<std::string>* from : {&input->Remarks(), &writer.Remarks()}) {
        for (const std::string& remark : *from) {
            result.remarks.Add(platform::TextFromUtf8(remark));
        }
    }
    progress.Finish();
    output.Commit();
    transaction.Commit();
    return result;
}

} // namespace

RewrapResult MakeFile(const Request& request, copy::Watch& watch) {
    LoadMediaModule();
    Progress progress(watch);
    try {
        return Make(request, progress);
    } catch (const copy::Failure&) {
        if (progress.IsCancelled()) { // whatever it led to
            throw copy::Cancelled();
        }
        throw;
    }
}

} // namespace nqp2::worker::rewrap
