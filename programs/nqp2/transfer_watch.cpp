// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/transfer_watch.h"

#include "console/console.h"
#include "NQP2ParserU/Interrupt.h"
#include "NQP2ParserU/NQP2Parser.h"

namespace nqp2::tool {
namespace {

/// The flag is set anew at each call: the library keeps it from one transfer to the next.
void Hear(std::uint32_t position, std::uint32_t total, std::int32_t& abort, void* context) {
    abort = static_cast<TransferWatch*>(context)->GoesOn(position, total) ? 0 : 1;
}

} // namespace

void TellIncomplete(Console& console, const std::string& label, const std::string& sentence) {
    console.Message("nqp2: " + label + ": not whole (" + sentence + ")");
}

TransferWatch::TransferWatch(bool quiet) : m_bar(quiet) {
    CatchInterrupt();
}

void TransferWatch::Follow(CNQP2Parser& parser) {
    parser.SetImpCallBack(Hear, this);
}

void TransferWatch::Begin(const std::string& label) {
    if (WasInterrupted()) {
        throw Failure(label, "not begun", "cancelled");
    }
    m_bar.Begin(label);
}

bool TransferWatch::GoesOn(std::uint64_t done, std::uint64_t total) {
    m_bar.Show(done, total);
    return !WasInterrupted();
}

} // namespace nqp2::tool
