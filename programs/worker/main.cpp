// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "manual/help_text.h"
#include "manual/man_page.h"
#include "NQP2ParserU/Channel.h"
#include "NQP2ParserU/DriveMap.h"
#include "NQP2ParserU/Terminal.h"
#include "worker/server.h"

#include <charconv>
#include <csignal>
#include <cstdio>
#include <exception>
#include <new>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr int kWrongUsage = 2;

constexpr const char* kVersion = "nqp2-worker " NQP2_WORKER_VERSION;

nqp2::manual::CommandPage WorkerPage() {
    nqp2::manual::CommandPage page;
    page.name = "nqp2-worker";
    page.purpose = "Does for programs that use P2 cards what writes to a card or decodes media";
    page.options = {{{"-h", "--help"}, "", "Print this help", {}, "", {}, {}},
                    {{"--version"}, "", "Print the version", {}, "", {}, {}},
                    {{"--socket"}, "PATH", "Where hosts reach it", {}, "", {}, {}},
                    {{"--host"},
                     "NUMBER",
                     "The descriptor by which the host that starts it reaches it",
                     {},
                     "",
                     {},
                     {}},
                    {{"--drive"},
                     "LETTER=FOLDER",
                     "Let a drive letter stand for a folder",
                     {},
                     "",
                     {},
                     {},
                     false,
                     true}};
    page.notes = {"A program that uses the library starts it, and nqp2 does so by itself. It takes "
                  "--socket, --host or both, serves any number of hosts and ends with the last of "
                  "them. SIGTERM, SIGINT and SIGHUP end it at any moment: nothing half-written "
                  "stays."};
    page.statuses = {{"0", "ended as it should"}, {"1", "could not start"}, {"2", "wrong usage"}};
    page.files = {{"nqp2-media.so", "beside it: what it needs for camera files and recordings"}};
    page.examples = {"nqp2-worker --socket /run/user/1000/cards"};
    return page;
}

/// What it tells of itself when asked to; "" when it is not.
std::string AskedText(std::string_view argument) {
    const auto page = WorkerPage();
    return argument == "--help" || argument == "-h" ? nqp2::manual::HelpText(page)
           : argument == "--version"                ? std::string(kVersion) + '\n'
           : argument == "--manual"
               ? nqp2::manual::ManPage(page, "NQP2ParserU " NQP2_WORKER_VERSION, {"nqp2"})
               : "";
}

struct Options {
    nqp2::ListenSettings reached;
    bool areSound = true;
};

bool ReadNumber(std::string_view text, int& number) {
    const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
    return end.ec == std::errc() && end.ptr == text.data() + text.size() && number > 2;
}

Options ReadArguments(int count, char** arguments) {
    Options options;
    for (int i = 1; i < count; i += 2) {
        const std::string_view name = arguments[i];
        const std::string value = i + 1 < count ? arguments[i + 1] : "";
        if (name == "--socket" && !value.empty()) {
            options.reached.socket = value;
        } else if (name == "--host" && ReadNumber(value, options.reached.hostDescriptor)) {
            // by whoever starts it for one host
        } else if (name != "--drive" || !nqp2::MapDriveFromArgument(value)) {
            options.areSound = false;
        }
    }
    options.areSound = options.areSound &&
                       (!options.reached.socket.empty() || options.reached.hostDescriptor >= 0);
    return options;
}

/// The signals that end the worker; every thread leaves them to the main one.
sigset_t EndingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int each : {SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&signals, each);
    }
    return signals;
}

int Serve(nqp2::ListenSettings reached) {
    const sigset_t signals = EndingSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    // The end of the last host is one way more to be asked to end.
    reached.whenAlone = [] { kill(getpid(), SIGTERM); };
    const nqp2::WorkerStatus status = nqp2::ListenForHosts(reached);
    if (!status.reason.empty()) {
        std::fprintf(stderr, "nqp2-worker: %s\n", status.reason.c_str());
    }
    if (!status) {
        return 1;
    }
    nqp2::worker::Server server(*nqp2::WorkerInterface().table);
    server.Start();
    int signal = 0;
    sigwait(&signals, &signal);
    nqp2::StopListening();
    server.Stop();
    return 0;
}

/// A transfer holds a lock for each clip and a session its channels: as many as the system allows.
void RaiseDescriptorLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        static_cast<void>(setrlimit(RLIMIT_NOFILE, &limit));
    }
}

} // namespace

int main(int count, char** arguments) {
    if (!nqp2::OpenStandardStreams()) {
        return 1;
    }
    if (const std::string text = AskedText(count == 2 ? arguments[1] : ""); !text.empty()) {
        return std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0 ? 0 : 1;
    }
    const Options options = ReadArguments(count, arguments);
    if (!options.areSound) {
        std::fputs(nqp2::manual::ShortHelp(WorkerPage()).c_str(), stderr);
        return kWrongUsage;
    }
    try {
        nqp2::LetWritesFail(); // a file beyond the limit is an error of one request
        RaiseDescriptorLimit();
        return Serve(options.reached);
    } catch (const std::bad_alloc&) {
        std::fputs("nqp2-worker: there is not enough memory\n", stderr);
        return 1;
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "nqp2-worker: %s\n", fault.what());
        return 1;
    }
}
