// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/folder.h"
#include "worker/base/media_module.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace nqp2::worker::rewrap {

/// The file in the making, hidden until Commit, gone with the object without it: written by the
/// module, then read back around the system's copy of it. Everything but what the module calls
/// throws a Failure.
class OutputFile final : public MediaOutput, public MediaInput {
public:
    /// `goesOn` outlives it.
    OutputFile(platform::Folder& folder, const std::string& name,
               const std::function<bool()>& goesOn);

    bool WriteAt(std::uint64_t position, std::string_view bytes) noexcept override;
    [[nodiscard]] const std::string& Name() const override { return m_path; }
    [[nodiscard]] std::uint64_t Size() const override { return m_size; }
    std::int64_t ReadAt(std::uint64_t position, char* buffer,
                        std::size_t capacity) noexcept override;
    [[nodiscard]] bool GoesOn() noexcept override { return m_goesOn(); }

    /// Fails when the module did, with the system's words where these are the reason.
    void Require(const MediaFault& fault) const;
    /// Brings all of it onto the medium.
    void Flush();
    void Commit();

private:
    std::string m_path;
    const std::function<bool()>& m_goesOn;
    std::unique_ptr<platform::FileWriter> m_writer;
    std::uint64_t m_size = 0;
    platform::IoStatus m_failure; ///< the first one of the writer
};

} // namespace nqp2::worker::rewrap
