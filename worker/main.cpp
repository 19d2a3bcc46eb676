// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/Channel.h"
#include "platform/DriveMap.h"
#include "platform/Terminal.h"
#include "worker/server.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

namespace {

constexpr int kWrongUsage = 2;

struct Options {
    std::string socket;
    bool areSound = true;
};

Options ReadArguments(int count, char** arguments) {
    Options options;
    for (int i = 1; i < count; i += 2) {
        const std::string_view name = arguments[i];
        const std::string value = i + 1 < count ? arguments[i + 1] : "";
        if (name == "--socket" && !value.empty()) {
            options.socket = value;
        } else if (name != "--drive" || !nqp2::MapDriveFromArgument(value)) {
            options.areSound = false;
        }
    }
    options.areSound = options.areSound && !options.socket.empty();
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

int Serve(const std::string& socket) {
    const sigset_t signals = EndingSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    const nqp2::WorkerStatus status = nqp2::ListenForHosts(socket);
    if (!status) {
        std::fprintf(stderr, "nqp2-worker: %s\n", status.reason.c_str());
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

} // namespace

int main(int count, char** arguments) {
    const Options options = ReadArguments(count, arguments);
    if (!options.areSound) {
        std::fputs("usage: nqp2-worker [--drive LETTER=FOLDER]... --socket PATH\n", stderr);
        return kWrongUsage;
    }
    try {
        nqp2::LetWritesFail();
        std::signal(SIGXFSZ, SIG_IGN); // a file beyond the limit is an error of one request
        return Serve(options.socket);
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "nqp2-worker: %s\n", fault.what());
        return 1;
    }
}
