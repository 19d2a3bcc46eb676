// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/failure.h"
#include "tests/support/card_builder.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/files_below.h"
#include "worker/recording.h"
#include "worker/transfer.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace nqp2::worker {

/// The sentence with which it fails; "" when it does not.
inline std::string ErrorOf(const std::function<void()>& operation) {
    try {
        operation();
        return "";
    } catch (const copy::Failure& failure) {
        return failure.what();
    }
}

/// Remembers what it was told; ends the transfer at a position or at its end.
class RecordingWatch final : public copy::Watch {
public:
    std::uint64_t stopAt = std::numeric_limits<std::uint64_t>::max();
    bool mayFinish = true;
    std::uint64_t last = 0;
    std::uint64_t total = 0;

    bool GoesOn(std::uint64_t done, std::uint64_t all) override {
        EXPECT_GE(done, last);
        last = done;
        total = all;
        return done < stopAt;
    }
    bool MayFinish(std::uint64_t all) override {
        EXPECT_EQ(last, all);
        return mayFinish;
    }
};

using test::FilesBelow;

/// Bytes that differ from block to block, with a run of zeros in the middle and at the end.
inline std::string Essence(std::size_t size, char seed) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size / 3; ++i) {
        bytes[i] = bytes[size / 2 + i] =
            static_cast<char>(i * 7 + i / 251 + static_cast<unsigned char>(seed));
    }
    return bytes;
}

/// A clip with every kind of file. Its metadata tell the sizes of its essence.
inline void AddWholeClip(const test::CardBuilder& card, const std::string& name, char seed = 1,
                         test::ClipValues values = {}) {
    const std::string essence = "EssenceList/";
    values.insert(values.end(), {{essence + "Video/VideoIndex/StartByteOffset", "100"},
                                 {essence + "Video/VideoIndex/DataSize", "299901"},
                                 {essence + "+Audio/AudioIndex/DataSize", "20000"},
                                 {essence + "+Audio/AudioIndex/DataSize", "20000"}});
    card.AddClip(name, values);
    card.AddFile("VIDEO/" + name + ".MXF", Essence(300'001, seed));
    card.AddFile("AUDIO/" + name + "00.MXF", Essence(20'000, seed));
    card.AddFile("AUDIO/" + name + "01.mxf", Essence(20'000, static_cast<char>(seed + 1)));
    card.AddFile("ICON/" + name + ".BMP", "icon");
    card.AddFile("PROXY/" + name + ".MP4", "proxy");
    card.AddFile("PROXY/" + name + ".BIN", "times");
    card.AddFile("VOICE/" + name + "00.WAV", "voice");
}
inline constexpr std::size_t kFilesOfAClip = 8;

/// Fails file operations of a request in turn, one each time: every so manieth, all of them with
/// NQP2_FAULTS=1. A request that fails leaves nothing behind in the folder, and one that gets over
/// the fault leaves what it leaves without it. Returns how often it failed.
inline int SweepFaults(const std::string& folder, const std::function<std::string()>& request,
                       std::uint64_t every = 1) {
    const auto clear = [&] {
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            std::filesystem::remove_all(entry.path());
        }
    };
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem use(files);
    EXPECT_EQ(request(), "");
    const auto whole = FilesBelow(folder);
    const std::uint64_t calls = files.Calls();
    if (std::getenv("NQP2_FAULTS") != nullptr) {
        every = 1;
    }
    int failures = 0;
    for (std::uint64_t skip = 0; skip < calls; skip += every) {
        clear();
        files.HealAll();
        files.Fail({platform::IoError::Device, {}, "", skip, 1});
        if (const std::string error = request(); !error.empty()) {
            ++failures;
            EXPECT_TRUE(std::filesystem::is_empty(folder)) << skip << ": " << error;
        } else {
            EXPECT_TRUE(FilesBelow(folder) == whole) << skip;
        }
    }
    clear();
    return failures;
}

/// A recording of whole pictures without sound; "" or its first failure.
inline std::string Record(
    const RecordingParameters& parameters, const std::vector<std::string>& units,
    const std::function<void()>& beforeTheEnd = [] {}) {
    return ErrorOf([&] {
        Recording recording(parameters, 0, VS_50I);
        for (const std::string& unit : units) {
            recording.Add(unit, "");
        }
        beforeTheEnd();
        recording.Finish();
    });
}

inline CString Name(const char* text) {
    return CString(std::wstring(text, text + std::char_traits<char>::length(text)));
}

} // namespace nqp2::worker
