// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/worker_session.h"

#include "nqp2/console.h"
#include "nqp2/worker_path.h"
#include "NQP2ParserU/Channel.h"
#include "NQP2ParserU/ProgramFolder.h"
#include "NQP2ParserU/R8P2SysInterface.h"
#include "NQP2ParserU/TextBytes.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <system_error>

namespace nqp2::tool {
namespace {

constexpr const char* kWorkerName = "/nqp2-worker";

/// Beside this program as in a build, else where an installation puts it.
std::string OwnWorker() {
    const std::string folder = ProgramFolder();
    for (const char* const place : {"", "/" NQP2_LIBEXEC_FROM_BIN}) {
        std::string program = folder + place + kWorkerName;
        std::error_code error;
        if (std::filesystem::exists(program, error)) {
            return program;
        }
    }
    throw Failure("nqp2-worker", "is not there",
                  "looked beside nqp2 and in its libexec folder; --worker names another place",
                  kWorkerFailed);
}

} // namespace

void AddWorkerOption(CLI::App& command, std::string& program) {
    command
        .add_option("--worker", program,
                    "The worker program; the nqp2-worker of this installation if left out")
        ->type_name("PATH");
}

Worker::Worker(const std::string& program) {
    WorkerSettings settings;
    settings.program = program.empty() ? OwnWorker() : program;
    settings.arguments = DriveArguments();
    if (const WorkerStatus status = UseWorker(settings); !status) {
        throw Failure("the worker", "does not start", status.reason, kWorkerFailed);
    }
    const SystemInterface own = HostInterface();
    R8P2Parser_SetSysInterface(own.systemObject, own.table);
}

Worker::~Worker() {
    R8XDCAMParser_ResetSysInterface();
    LeaveWorker();
}

void WorkerSession::Require(bool done, std::string_view subject, std::string_view problem) {
    if (done) {
        return;
    }
    // A refusal always comes with a sentence, and a closed channel with none.
    const std::string sentence = Sentence();
    if (sentence.empty()) {
        throw Failure(subject, problem, "the worker has ended or does not answer", kWorkerFailed);
    }
    throw Failure(subject, problem, sentence);
}

std::string WorkerSession::Sentence() {
    return BytesFromText(m_parser->GetLastError());
}

void WorkerSession::RequireNoFailure(std::string_view subject, std::string_view problem) {
    constexpr int kUsualBlock = 1 << 20;
    Require(Sentence().empty(), subject, problem);
    // Silence is no success: a request that changes nothing shows whether the worker is there.
    Require(m_parser->SetWriteBlockSize(kUsualBlock) == 1, subject, problem);
}

} // namespace nqp2::tool
