// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/rewrap/file_plan.h"
#include "worker/rewrap/output_file.h"
#include "worker/rewrap/tally.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace nqp2::worker::rewrap {

/// Puts a recording's units into the new file and keeps tally of what went there. Throws a Failure.
class UnitWriter {
public:
    /// All outlive it.
    UnitWriter(const Request& request, const PlannedFile& plan, const RecordingInput& input,
               OutputFile& output);

    void Put(const MediaUnit& unit);
    /// Completes the file.
    void Finish();

    /// By track.
    [[nodiscard]] const std::vector<std::unique_ptr<Tally>>& Tallies() const { return m_tallies; }
    [[nodiscard]] const std::vector<std::string>& Remarks() const { return m_remarks; }

private:
    /// Sound that waits until its picture is there: MXF takes whole frames of it.
    struct Waiting {
        std::string bytes;
        std::int64_t samples = 0; ///< written before
    };

    void PutPicture(const MediaUnit& unit);
    void PutWhole(const MediaUnit& unit);
    void PutInFrames(const MediaUnit& unit);
    void PutDue(std::size_t track);
    void FillLastFrame(std::size_t track);
    [[nodiscard]] std::size_t SampleBytes(std::size_t track) const;

    const Request& m_request;
    const PlannedFile& m_plan;
    const RecordingInput& m_input;
    OutputFile& m_output;
    std::unique_ptr<MediaWriter> m_writer;
    std::vector<std::unique_ptr<Tally>> m_tallies;
    std::vector<Waiting> m_waiting; ///< by track
    std::vector<std::string> m_remarks;
    std::int64_t m_frames = 0;
    bool m_isInFrames;
};

} // namespace nqp2::worker::rewrap
