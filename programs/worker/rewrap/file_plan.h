// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/rewrap/containers.h"
#include "worker/rewrap/recording_input.h"
#include "worker/rewrap/request.h"

#include <string>
#include <vector>

namespace nqp2::worker::rewrap {

/// What will be written, as the module is told.
struct PlannedFile {
    FilePlan file;
    const char* reader = "";      ///< libavformat's name of what reads it back
    std::vector<Essence> essence; ///< by track
    std::string setsToInsert;     ///< parameter sets that each picture is to get; "" for none
};

/// Fails when the container does not hold it, and for what the request says that no file can.
PlannedFile PlanFor(const Request& request, RecordingInput& input);

/// Marks for so many pictures: the first at the start, none behind the last picture.
std::vector<MediaMark> MarksFor(const Request& request, const FrameRate& rate);

} // namespace nqp2::worker::rewrap
