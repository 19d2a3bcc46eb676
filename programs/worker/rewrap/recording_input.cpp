// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/rewrap/recording_input.h"

#include "worker/base/media_module.h"

namespace nqp2::worker::rewrap {

std::int64_t SamplesUpTo(std::int64_t frames, const FrameRate& rate) {
    return (frames * kSampleRate * rate.seconds + rate.frames / 2) / rate.frames;
}

FrameRate RateOf(const MediaStream& picture, const Request& request, const std::string& name) {
    const FrameRate told = request.rate;
    const FrameRate own = picture.rate;
    if (told.frames == 0 && own.frames == 0) {
        throw copy::Failure(name + " does not tell its frame rate.");
    }
    if (told.frames == 0 || own.frames == 0) {
        return told.frames == 0 ? own : told;
    }
    if (std::int64_t{told.frames} * own.seconds != std::int64_t{own.frames} * told.seconds) {
        throw copy::Failure(name + " has " + std::to_string(own.frames) + "/" +
                            std::to_string(own.seconds) +
                            " pictures a second, and its metadata tell of " +
                            std::to_string(told.frames) + "/" + std::to_string(told.seconds) + ".");
    }
    return told;
}

copy::Failure DamagedAt(const std::string& name, std::uint64_t picture, const std::string& fault) {
    std::string text = name + " is damaged or cut off at picture " + std::to_string(picture);
    return copy::Failure(fault.empty() ? text + "." : text + ": " + fault + ".");
}

void CheckPromise(std::uint64_t frames, std::uint64_t promised, const std::string& name,
                  std::uint64_t slack, std::vector<std::string>& remarks) {
    if (promised == 0 || frames == promised || 2 * frames == promised || frames == 2 * promised) {
        return;
    }
    const std::string counts = name + " has " + std::to_string(frames) +
                               " pictures, and its metadata tell of " + std::to_string(promised) +
                               ".";
    if (frames + slack < promised) {
        throw copy::Failure(counts);
    }
    remarks.push_back(counts);
}

} // namespace nqp2::worker::rewrap
