// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/transfer_watch.h"

#include "NQP2ParserU/Interrupt.h"
#include "NQP2ParserU/NQP2Parser.h"

namespace nqp2::tool {
namespace {

constexpr std::uint64_t kKiB = 1024;

/// The flag is set anew at each call: the library keeps it from one transfer to the next.
void Hear(std::uint32_t position, std::uint32_t total, std::int32_t& abort, void* context) {
    abort = static_cast<TransferWatch*>(context)->GoesOn(position, total) ? 0 : 1;
}

} // namespace

void TellIncomplete(RunProgress& progress, const std::string& label, const std::string& sentence) {
    progress.Remark(label + ": not whole (" + sentence + ")");
}

TransferWatch::TransferWatch(const ProgressOptions& options)
    : m_wasFormChosen(!options.form.empty()),
      m_progress(options.quiet ? ProgressForm::None : ProgressFormNamed(options.form)) {
    CatchInterrupt();
}

void TransferWatch::Follow(CNQP2Parser& parser) {
    parser.SetImpCallBack(Hear, this);
}

void TransferWatch::BeginRun(const std::string& phase, const FileSum& all) {
    m_progress.Begin(phase, all.files, all.bytes);
}

void TransferWatch::Begin(const std::string& label) {
    const std::lock_guard lock(m_mutex);
    m_label = label;
    m_isRunning = true;
}

bool TransferWatch::GoesOn(std::uint64_t done, std::uint64_t /*total*/) {
    const std::lock_guard lock(m_mutex);
    if (m_isRunning) {
        m_progress.Show({m_done.bytes + done * kKiB, m_done.files, m_label, ""});
    }
    return !WasInterrupted();
}

void TransferWatch::End(const FileSum& done) {
    const std::lock_guard lock(m_mutex);
    m_isRunning = false;
    m_done += done;
    m_progress.Clear();
}

void TransferWatch::EndRun() {
    // The results tell it to a person who asked for no form.
    if (m_wasFormChosen) {
        m_progress.End({m_done.bytes, m_done.files, "", ""});
    }
}

} // namespace nqp2::tool
