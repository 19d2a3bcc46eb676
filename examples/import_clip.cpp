// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include <NQP2ParserU/Channel.h>
#include <NQP2ParserU/Interrupt.h>
#include <NQP2ParserU/PathText.h>
#include <NQP2ParserU/R8P2SysInterface.h>
#include <NQP2ParserU/ReadyParser.h>
#include <NQP2ParserU/TextBytes.h>
#include <NQP2ParserU/WorkerFields.h>

#include <cstdio>
#include <filesystem>
#include <string>

/// Copies a whole clip off a card and verifies the copy; shows how far it is, gives up on Ctrl-C:
/// import_clip WORKER-PROGRAM CARD CLIP FOLDER

namespace {

/// What the host wants to know of in the callback.
struct Meter {
    const char* clip;
};

/// Called on a thread of the library, position and total in KiB.
void Show(std::uint32_t position, std::uint32_t total, std::int32_t& abort, void* context) {
    const auto percent = total == 0 ? 0.0 : 100.0 * position / total;
    std::fprintf(stderr, "\r%s %5.1f %%", static_cast<Meter*>(context)->clip, percent);
    // Set anew each time: the library keeps it from one transfer to the next.
    abort = nqp2::WasInterrupted() ? 1 : 0;
}

/// The worker has a working folder of its own, so paths go to it whole.
CString Root(const char* folder) {
    return nqp2::InterfaceRoot(std::filesystem::absolute(folder).native());
}

bool Import(const char* card, const char* clip, const char* folder) {
    Meter meter = {clip};
    nqp2::ReadyParser parser;
    parser->SetImpCallBack(Show, &meter);
    stu_R8P2TransInfo info;
    const nqp2::TransferFields transfer(info);
    transfer.cardRoot = Root(card);
    transfer.clipName = nqp2::TextFromBytes(clip);
    transfer.folder = Root(folder);
    if (parser->ImportFile(info) != 0) {
        const std::string reason = nqp2::BytesFromText(parser->GetLastError());
        std::fprintf(stderr, "\n%s\n", reason.empty() ? "the worker is gone" : reason.c_str());
        return false;
    }
    std::printf("\n%s: %u files\n", clip, transfer.files);
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: import_clip WORKER-PROGRAM CARD CLIP FOLDER\n");
        return 2;
    }
    nqp2::CatchInterrupt();
    const nqp2::WorkerStatus started = nqp2::UseWorker({.program = argv[1]});
    if (!started) {
        std::fprintf(stderr, "the worker does not start: %s\n", started.reason.c_str());
        return 1;
    }
    const nqp2::SystemInterface own = nqp2::HostInterface();
    R8P2Parser_SetSysInterface(own.systemObject, own.table);
    const bool done = Import(argv[2], argv[3], argv[4]);
    R8XDCAMParser_ResetSysInterface();
    nqp2::LeaveWorker();
    return done ? 0 : 1;
}
