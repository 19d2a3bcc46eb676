// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/worker_session.h"

#include "console/console.h"
#include "nqp2/clip_hint.h"
#include "nqp2/program_paths.h"
#include "NQP2ParserU/Channel.h"
#include "NQP2ParserU/DriveMap.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/R8P2SysInterface.h"
#include "NQP2ParserU/TextBytes.h"

#include <string>
#include <vector>

namespace nqp2::tool {
namespace {

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
    settings.program =
        program.empty() ? OwnProgram("nqp2-worker", "; --worker names another place") : program;
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

void WorkerSession::Require(bool done, std::string_view subject, std::string_view problem,
                            const Hint& hint) {
    if (done) {
        return;
    }
    // A refusal always comes with a sentence, and a closed channel with none.
    const std::string sentence = Sentence();
    if (sentence.empty()) {
        throw Failure(subject, problem, kNoWorker, kWorkerFailed);
    }
    throw Failure(subject, problem, WithHint(sentence, hint ? hint() : std::string()));
}

std::string WorkerSession::Sentence() {
    return BytesFromText(m_parser->GetLastError());
}

void WorkerSession::RequireNoFailure(std::string_view subject, std::string_view problem,
                                     const Hint& hint) {
    constexpr int kUsualBlock = 1 << 20;
    Require(Sentence().empty(), subject, problem, hint);
    // Silence is no success: a request that changes nothing shows whether the worker is there.
    Require(m_parser->SetWriteBlockSize(kUsualBlock) == 1, subject, problem);
}

} // namespace nqp2::tool
