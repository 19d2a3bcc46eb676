// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bench/measure.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <memory>
#include <stdexcept>
#include <utility>

namespace nqp2::bench {
namespace {

constexpr double kSecond = 1e9;
/// Work that takes less is repeated within a sample: reading a clock costs up to a microsecond.
constexpr double kShortestSample = 1e6;
constexpr double kMostRepeats = 1e7;
constexpr std::size_t kFewestSamples = 3;

void Call(const std::function<void()>& function) {
    if (function) {
        function();
    }
}

/// What another subject gave back in many small pieces is put together at the next large request:
/// that is made here, so that nobody pays for it in another's place.
void Settle() {
    constexpr std::size_t kLarge = std::size_t{64} * 1024;
    Keep(std::unique_ptr<char[]>(new char[kLarge]).get());
}

/// A subject with what its samples took.
class Series {
public:
    Series(Subject subject, Clock clock) : m_subject(std::move(subject)), m_clock(clock) {}

    void Sample() {
        if (!m_error.empty()) {
            return;
        }
        try {
            const double taken = Run(m_repeats);
            if (m_samples.empty()) { // the first one warms up, and tells how many make a sample
                m_repeats = Repeats(taken);
                m_samples.push_back(taken);
                return;
            }
            m_total += taken;
            m_samples.push_back(taken / m_repeats);
        } catch (const std::exception& error) {
            m_error = error.what();
        }
    }

    [[nodiscard]] bool IsDone(double least) const {
        return !m_error.empty() || (m_total >= least && m_samples.size() > kFewestSamples);
    }
    [[nodiscard]] const std::string& Name() const { return m_subject.name; }
    [[nodiscard]] const std::string& Error() const { return m_error; }

    /// The warm-up left out.
    [[nodiscard]] double Low() const {
        std::vector<double> sorted(m_samples.begin() + 1, m_samples.end());
        std::sort(sorted.begin(), sorted.end());
        return sorted[sorted.size() / 10];
    }

private:
    double Run(double repeats) {
        Call(m_subject.before);
        Settle();
        const double start = Now(m_clock);
        for (double i = 0; i < repeats; ++i) {
            m_subject.run();
        }
        const double taken = Now(m_clock) - start;
        Call(m_subject.after);
        return taken;
    }

    [[nodiscard]] double Repeats(double taken) const {
        if ((m_subject.before || m_subject.after) && !m_subject.repeats) {
            return 1;
        }
        return std::clamp(std::ceil(kShortestSample / std::max(taken, 1.0)), 1.0, kMostRepeats);
    }

    Subject m_subject;
    Clock m_clock;
    double m_repeats = 1;
    double m_total = 0;
    std::vector<double> m_samples;
    std::string m_error;
};

std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char each : text) {
        if (each == '"' || each == '\\') {
            quoted += '\\';
        }
        quoted += static_cast<unsigned char>(each) < ' ' ? ' ' : each;
    }
    return quoted + '"';
}

std::string Number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

std::vector<std::string> Split(const std::string& list) {
    std::vector<std::string> parts;
    for (std::size_t start = 0; start < list.size();) {
        const std::size_t end = std::min(list.find(',', start), list.size());
        parts.push_back(list.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

} // namespace

double Now(Clock clock) {
    timespec time{};
    clock_gettime(clock == Clock::Wall ? CLOCK_MONOTONIC : CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * kSecond + static_cast<double>(time.tv_nsec);
}

Bench::Bench(std::vector<std::string> commandLine) {
    const std::string minTime = "--min-time=";
    const std::string only = "--only=";
    for (std::string& each : commandLine) {
        if (each.starts_with(minTime)) {
            m_minSeconds = std::strtod(each.c_str() + minTime.size(), nullptr);
        } else if (each.starts_with(only)) {
            m_only = Split(each.substr(only.size()));
        } else {
            m_arguments.push_back(std::move(each));
        }
    }
}

bool Bench::Wants(std::string_view name) const {
    return m_only.empty() || std::find(m_only.begin(), m_only.end(), name) != m_only.end();
}

void Bench::Together(Clock clock, std::vector<Subject> subjects) {
    std::vector<Series> all;
    for (Subject& each : subjects) {
        if (Wants(each.name)) {
            all.emplace_back(std::move(each), clock);
        }
    }
    const double least = m_minSeconds * kSecond;
    while (!std::all_of(all.begin(), all.end(),
                        [least](const Series& each) { return each.IsDone(least); })) {
        std::for_each(all.begin(), all.end(), [](Series& each) { each.Sample(); });
    }
    for (const Series& each : all) {
        const bool failed = !each.Error().empty();
        Add(each.Name(), failed ? "error" : "value",
            failed ? Quoted(each.Error()) : Number(each.Low()));
    }
}

void Bench::Value(const std::string& name, const std::function<double()>& measure) {
    if (!Wants(name)) {
        return;
    }
    try {
        Add(name, "value", Number(measure()));
    } catch (const std::exception& error) {
        Add(name, "error", Quoted(error.what()));
    }
}

void Bench::Absent(const std::string& name, const std::string& reason) {
    if (Wants(name)) {
        Add(name, "absent", Quoted(reason));
    }
}

void Bench::Add(const std::string& name, const std::string& key, const std::string& json) {
    m_json.append(m_json.empty() ? "" : ",\n ")
        .append("{\"name\": ")
        .append(Quoted(name))
        .append(", ")
        .append(Quoted(key))
        .append(": ")
        .append(json)
        .append("}");
}

void Bench::Print() const {
    std::printf("[%s]\n", m_json.c_str());
}

int Main(int argc, char** argv, std::size_t least, const char* usage,
         const std::function<void(Bench&)>& measure) {
    try {
        Bench bench({argv + 1, argv + argc});
        if (bench.Arguments().size() < least) {
            std::fprintf(stderr, "usage: %s [--min-time=SECONDS] [--only=NAME,...] %s\n", argv[0],
                         usage);
            return 2;
        }
        measure(bench);
        bench.Print();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
    return 0;
}

int MainOfCards(int argc, char** argv,
                void (*measure)(Bench&, const std::string& name, const std::string& card)) {
    return Main(argc, argv, 2, "{NAME CARD}...", [&](Bench& bench) {
        const std::vector<std::string>& arguments = bench.Arguments();
        for (std::size_t i = 0; i + 1 < arguments.size(); i += 2) {
            measure(bench, arguments[i], arguments[i + 1]);
        }
    });
}

void Require(bool good, const char* what) {
    if (!good) {
        throw std::runtime_error(what);
    }
}

} // namespace nqp2::bench
