// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Runs a fuzz target without a fuzzer: every file of a corpus folder, then a fixed number of
// mutations of them, the same in each run. The current input is in the file
// <program>.last-input of the current folder, so that a crash can be repeated:
//   fuzz_clip CORPUS-FOLDER MUTATIONS
//   fuzz_clip FILE

#include "fuzz/fuzz_target.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <stdexcept>
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
    std::set<fs::path> names;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            names.insert(entry.path());
        }
    }
    if (names.empty()) {
        throw std::runtime_error("no files in " + folder.string());
    }
    Corpus corpus;
    std::transform(names.begin(), names.end(), std::back_inserter(corpus), ReadFile);
    return corpus;
}

/// Random choices that, unlike the standard distributions, are the same with every library.
class Dice {
public:
    /// A number below `limit`; 0 for a limit of 0.
    std::size_t Below(std::size_t limit) { return limit == 0 ? 0 : m_engine() % limit; }
    char Byte() { return static_cast<char>(m_engine() & 0xFFU); }
    /// A random piece of a text.
    std::string_view Slice(std::string_view text) {
        const std::size_t start = Below(text.size());
        return text.substr(start, 1 + Below(kMaxSlice));
    }

private:
    std::mt19937_64 m_engine{0x4E51'5032};
};

void RepeatSlice(std::string& input, Dice& dice) {
    const std::string slice(dice.Slice(input));
    for (std::size_t left = 1 + dice.Below(16); left > 0; --left) {
        input.insert(dice.Below(input.size() + 1), slice);
    }
}

void Mutate(std::string& input, const std::string& other, Dice& dice) {
    enum Kind { FlipBit, SetByte, CutOff, EraseSlice, InsertByte, InsertOther, Repeat, kKinds };
    const std::size_t kind = dice.Below(kKinds);
    const std::size_t inserts = kind == InsertByte || kind == InsertOther ? 1 : 0;
    const std::size_t place = dice.Below(input.size() + inserts);
    if (place == input.size() && inserts == 0) {
        return; // nothing to change
    }
    switch (kind) {
    case FlipBit:
        input[place] = static_cast<char>(input[place] ^ static_cast<char>(1U << dice.Below(8)));
        break;
    case SetByte:
        input[place] = dice.Byte();
        break;
    case CutOff:
        input.resize(place);
        break;
    case EraseSlice:
        input.erase(place, 1 + dice.Below(kMaxSlice));
        break;
    case InsertByte:
        input.insert(place, 1, dice.Byte());
        break;
    case InsertOther:
        input.insert(place, dice.Slice(other));
        break;
    default:
        RepeatSlice(input, dice);
    }
}

std::string Mutated(const Corpus& corpus, Dice& dice) {
    std::string input = corpus[dice.Below(corpus.size())];
    for (std::size_t left = 1 + dice.Below(kMaxSteps); left > 0; --left) {
        Mutate(input, corpus[dice.Below(corpus.size())], dice);
    }
    input.resize(std::min(input.size(), kMaxInput));
    return input;
}

void RunOne(const std::string& input) {
    // A copy of exact size on the heap: the sanitizer then sees a read of one byte too many.
    const std::vector<std::uint8_t> bytes(input.begin(), input.end());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

void ReplayCorpus(const fs::path& folder, std::size_t mutations, const fs::path& keepAs) {
    const Corpus corpus = ReadCorpus(folder);
    // The file stays open: making it anew for each input would cost a thousand times what the
    // target does.
    std::ofstream kept(keepAs, std::ios::binary | std::ios::trunc);
    const auto run = [&](const std::string& input) {
        kept.seekp(0);
        kept << input << std::flush;
        fs::resize_file(keepAs, input.size());
        RunOne(input);
    };
    std::for_each(corpus.begin(), corpus.end(), run);
    Dice dice;
    for (std::size_t i = 0; i < mutations; ++i) {
        run(Mutated(corpus, dice));
    }
    kept.close();
    fs::remove(keepAs);
    std::printf("%zu files and %zu mutations ran\n", corpus.size(), mutations);
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv, argv + argc);
    try {
        if (argc == 2) {
            RunOne(ReadFile(arguments[1]));
        } else if (argc == 3 && arguments[2].find_first_not_of("0123456789") == std::string::npos) {
            ReplayCorpus(arguments[1], std::stoul(arguments[2]),
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
