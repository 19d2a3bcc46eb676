// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/worker_session.h"

#include "nqp2/console.h"
#include "NQP2ParserU/Channel.h"
#include "NQP2ParserU/DriveMap.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/ProgramFolder.h"
#include "NQP2ParserU/R8P2SysInterface.h"
#include "NQP2ParserU/TextBytes.h"

#include <filesystem>
#include <system_error>
#include <vector>

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

/// A part that is not there is taken as it is written.
std::string WholePath(const std::string& path) {
    std::error_code error;
    std::filesystem::path whole = std::filesystem::absolute(path, error);
    if (!error) {
        whole = std::filesystem::weakly_canonical(whole, error);
    }
    if (error) {
        throw Failure(path, "cannot be reached", error.message());
    }
    return whole.native();
}

/// The mapped drives as arguments of the worker, their folders as whole paths.
std::vector<std::string> DriveArguments() {
    std::vector<std::string> arguments;
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        if (IsDriveMapped(static_cast<wchar_t>(letter))) {
            const std::string drive(1, letter);
            arguments.emplace_back("--drive");
            arguments.push_back(drive + '=' + WholePath(PosixPath(TextFromBytes(drive + ":\\"))));
        }
    }
    return arguments;
}

} // namespace

CString WorkerPath(const std::string& argument) {
    if (argument.empty()) {
        throw Failure("", "is no path", "it is empty", kUsage);
    }
    const CString text = TextFromBytes(argument);
    if (IsMappedDrive(text)) {
        return text;
    }
    const CString path = InterfaceRoot(WholePath(argument));
    if (path.IsEmpty()) {
        throw Failure(argument, "cannot be read", "a path must not contain \":\\\"");
    }
    return path;
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
