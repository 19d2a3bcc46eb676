// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// Times what is measured together in turn, so that a busy machine slows each alike, and keeps the
/// tenth percentile: what the work takes when nothing disturbs it.
namespace nqp2::bench {

enum class Clock {
    Processor, ///< processor time of this process and its threads
    Wall,
};

/// Nanoseconds of the clock.
double Now(Clock clock);

/// One thing to measure. Whatever it throws becomes its figure's error.
struct Subject {
    std::string name; ///< of its figure, without the program's name
    std::function<void()> run;
    std::function<void()> before = {}; ///< not timed
    std::function<void()> after = {};  ///< not timed
    /// Whether before and after may stand around many runs; without them short runs always repeat.
    bool repeats = false;
};

/// The measurements of one program. Figures are nanoseconds, unless they are given as values, and
/// go to standard output as JSON when all are there.
class Bench {
public:
    /// Options come before the arguments: --min-time=SECONDS of each subject, --only=NAME,NAME,...
    explicit Bench(std::vector<std::string> commandLine);

    [[nodiscard]] const std::vector<std::string>& Arguments() const { return m_arguments; }
    /// Whether the figure is asked for. The subjects of a group that are not are left out.
    [[nodiscard]] bool Wants(std::string_view name) const;

    /// Measures in turn until each subject has had its time, and at least three times.
    void Together(Clock clock, std::vector<Subject> subjects);
    /// A figure that is no time of a run. Its error, too, is what `measure` throws.
    void Value(const std::string& name, const std::function<double()>& measure);
    /// A figure that this machine cannot give.
    void Absent(const std::string& name, const std::string& reason);

    void Print() const;

private:
    void Add(const std::string& name, const std::string& key, const std::string& json);

    double m_minSeconds = 0.3;
    std::vector<std::string> m_only; ///< empty: all
    std::vector<std::string> m_arguments;
    std::string m_json;
};

/// The body of a main function: lets `measure` do its work and prints. Returns the exit status; 2
/// for fewer than `least` arguments, which `usage` names.
int Main(int argc, char** argv, std::size_t least, const char* usage,
         const std::function<void(Bench&)>& measure);

/// The same for arguments that are cards, each behind a name for its figures.
int MainOfCards(int argc, char** argv,
                void (*measure)(Bench&, const std::string& name, const std::string& card));

/// Throws an error of that text unless `good`.
void Require(bool good, const char* what);

/// Keeps the compiler from leaving out what `value` is worked out by.
template <class Value>
void Keep(const Value& value) {
    asm volatile("" : : "r,m"(value) : "memory");
}

} // namespace nqp2::bench
