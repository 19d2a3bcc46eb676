// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Runs a fuzz target without a fuzzer: every file of a corpus folder, then a fixed number of
// mutations of them, the same in each run. The current input is in the file
// <program>.last-input of the current folder, so that a crash can be repeated:
//   fuzz_clip CORPUS-FOLDER MUTATIONS
//   fuzz_clip FILE

#include "fuzz/measured_input.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMaxInput = std::size_t{1} << 20;
constexpr std::size_t kMaxSlice = 256;
constexpr std::size_t kMaxSteps = 8;

using Corpus = std::vector<std::string>;

std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + path.string());
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// All files below a folder, in the order of their names, which is the same everywhere.
Corpus ReadCorpus(const fs::path& folder) {
    std::map<std::string, std::string> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            files.emplace(entry.path().lexically_relative(folder).string(), ReadFile(entry.path()));
        }
    }
    Corpus corpus;
    for (auto& [name, content] : files) {
        corpus.push_back(std::move(content));
    }
    return corpus;
}

/// Random choices that, unlike the standard distributions, are the same with every library.
class Dice {
public:
    /// A number below `limit`; 0 for a limit of 0.
    std::size_t Below(std::size_t limit) { return limit == 0 ? 0 : m_engine() % limit; }
    char Byte() { return static_cast<char>(m_engine() & 0xFFU); }

private:
    std::mt19937_64 m_engine{0x4E51'5032};
};

/// A random piece of a text.
std::string_view Slice(std::string_view text, Dice& dice) {
    const std::size_t start = dice.Below(text.size());
    return text.substr(start, 1 + dice.Below(kMaxSlice));
}

using Mutation = void (*)(std::string& input, const std::string& other, Dice& dice);

void FlipBit(std::string& input, const std::string&, Dice& dice) {
    if (!input.empty()) {
        char& byte = input[dice.Below(input.size())];
        byte = static_cast<char>(static_cast<unsigned char>(byte) ^ (1U << dice.Below(8)));
    }
}

void SetByte(std::string& input, const std::string&, Dice& dice) {
    if (!input.empty()) {
        const std::size_t position = dice.Below(input.size());
        input[position] = dice.Byte();
    }
}

void InsertByte(std::string& input, const std::string&, Dice& dice) {
    const std::size_t position = dice.Below(input.size() + 1);
    input.insert(position, 1, dice.Byte());
}

void CutOff(std::string& input, const std::string&, Dice& dice) {
    input.resize(dice.Below(input.size()));
}

void EraseSlice(std::string& input, const std::string&, Dice& dice) {
    const std::size_t position = dice.Below(input.size());
    input.erase(position, 1 + dice.Below(kMaxSlice));
}

void RepeatSlice(std::string& input, const std::string&, Dice& dice) {
    const std::string slice(Slice(input, dice));
    const std::size_t times = 1 + dice.Below(16);
    for (std::size_t i = 0; i < times; ++i) {
        input.insert(dice.Below(input.size() + 1), slice);
    }
}

void InsertFromOther(std::string& input, const std::string& other, Dice& dice) {
    const std::size_t position = dice.Below(input.size() + 1);
    input.insert(position, Slice(other, dice));
}

constexpr Mutation kMutations[] = {FlipBit,    SetByte,     InsertByte,     CutOff,
                                   EraseSlice, RepeatSlice, InsertFromOther};

std::string Mutated(const Corpus& corpus, Dice& dice) {
    std::string input = corpus[dice.Below(corpus.size())];
    const std::size_t steps = 1 + dice.Below(kMaxSteps);
    for (std::size_t i = 0; i < steps; ++i) {
        const std::string& other = corpus[dice.Below(corpus.size())];
        kMutations[dice.Below(std::size(kMutations))](input, other, dice);
    }
    input.resize(std::min(input.size(), kMaxInput));
    return input;
}

void RunOne(const std::string& input) {
    // A copy of exact size on the heap: the sanitizer then sees a read of one byte too many.
    const std::vector<std::uint8_t> bytes(input.begin(), input.end());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

/// Keeps the input at work in a file. The file stays open: making it anew for each input would
/// cost a thousand times what the target does.
class LastInput {
public:
    explicit LastInput(fs::path path) : m_path(std::move(path)), m_file(m_path, kMode) {}

    void Keep(const std::string& input) {
        m_file.seekp(0);
        m_file << input << std::flush;
        fs::resize_file(m_path, input.size());
    }
    void Remove() {
        m_file.close();
        fs::remove(m_path);
    }

private:
    static constexpr auto kMode = std::ios::binary | std::ios::out | std::ios::trunc;

    fs::path m_path;
    std::ofstream m_file;
};

std::size_t ReadCount(std::string_view text) {
    std::size_t count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    if (error != std::errc() || end != text.data() + text.size()) {
        throw std::runtime_error("not a number: " + std::string(text));
    }
    return count;
}

void ReplayCorpus(const fs::path& folder, std::size_t mutations, const fs::path& keepAs) {
    const Corpus corpus = ReadCorpus(folder);
    if (corpus.empty()) {
        throw std::runtime_error("no files in " + folder.string());
    }
    LastInput lastInput(keepAs);
    const auto run = [&lastInput](const std::string& input) {
        lastInput.Keep(input);
        RunOne(input);
    };
    std::for_each(corpus.begin(), corpus.end(), run);
    Dice dice;
    for (std::size_t i = 0; i < mutations; ++i) {
        run(Mutated(corpus, dice));
    }
    lastInput.Remove();
    std::printf("%zu files and %zu mutations ran, in %zu KiB at most\n", corpus.size(), mutations,
                nqp2::fuzz::MostMemory() >> 10U);
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv, argv + argc);
    try {
        if (argc == 2) {
            RunOne(ReadFile(arguments[1]));
        } else if (argc == 3) {
            ReplayCorpus(arguments[1], ReadCount(arguments[2]),
                         fs::path(arguments[0]).filename().string() + ".last-input");
        } else {
            std::fputs("usage: CORPUS-FOLDER MUTATIONS | FILE\n", stderr);
            return 2;
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
