// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/value.h"
#include "nqp2/card.h"
#include "nqp2/command.h"
#include "nqp2/input_file.h"
#include "nqp2/input_text.h"
#include "nqp2/record_output.h"
#include "nqp2/worker_session.h"

#include "NQP2ParserU/NQP2BaseClipInfo.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/TextBytes.h"

#include <string>

namespace nqp2::tool {
namespace {

struct BaseInfoOptions {
    std::string file;
    std::string worker;
    bool json = false;
};

/// Under the names that the fields of a clip have.
Record BaseInfoRecord(const NQP2BaseClipInfo& info) {
    constexpr double kThousand = 1000;
    List audio;
    for (const CString& path : info.texts) {
        audio.emplace_back(OutputPath(path));
    }
    return {{"ClipName", BytesFromText(info.clipText1)},
            {"UserClipName", BytesFromText(info.clipText3)},
            {"GlobalClipGuid", GuidText(info.identifier)},
            {"StartDate", BytesFromText(info.clipText2)},
            {"FrameRate", BytesFromText(info.text1)},
            {"FramesPerSecond", static_cast<double>(info.value1) / kThousand},
            {"Duration", info.value2},
            {"StartTimecode", info.value3},
            {"CodecName", BytesFromText(info.codec)},
            {"AspectRatio", BytesFromText(info.text2)},
            {"ActivePixel", info.value4 & 0xFFFF},
            {"ActiveLine", info.value4 >> 16},
            {"VideoPath", OutputPath(info.text3)},
            {"AudioPath", audio}};
}

Status RunBaseInfo(Console& console, const BaseInfoOptions& options) {
    const CString path = WorkerPath(options.file);
    RequireRegularFile(PosixPath(path)); // the worker has fewer words for what is none
    WorkerSession session(options.worker);
    NQP2BaseClipInfo info;
    session.Require(session->GetP2BaseClipInfo(path, info) == 1, options.file, "not described");
    PrintRecord(console, options.json, BaseInfoRecord(info));
    return kDone;
}

} // namespace

void AddProbeCommand(const Command& program) {
    const Command command = program.Add("probe", "Describe a camera file");
    command.Alias("base-info");
    BaseInfoOptions& options = command.Runs(RunBaseInfo);
    command.Argument("FILE", options.file,
                     "A file of a camera (.MOV, .AVI, .MP4, .MXF, .MTS) or a clip's CLIP/NAME.XML");
    command.JsonFlag(options.json);
    command.WorkerOption(options.worker);
    command.Example("nqp2 probe /media/sd/SONY/DVF/100DVF/DV000001.AVI --json");
}

} // namespace nqp2::tool
