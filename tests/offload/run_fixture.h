// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/run_progress.h"
#include "offload/inspection.h"
#include "offload/run_offload.h"
#include "offload/unfinished_mark.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/temp_folder.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <string>

namespace nqp2::test {

/// A small card and two targets, each on a disk of its own as far as the file system tells.
class RunFixture {
public:
    RunFixture() {
        folder.Write("card/CONTENTS/CLIP/0001AB.XML", "<P2Main><ClipContent/></P2Main>");
        folder.Write("card/CONTENTS/VIDEO/0001AB.MXF", std::string(3'000'000, 'v'));
        folder.Write("card/CONTENTS/AUDIO/0001AB00.MXF", std::string(70'000, 'a'));
        folder.Write("card/LASTCLIP.TXT", "0001AB\n");
        folder.MakeFolder("card/CONTENTS/VOICE");
        folder.MakeFolder("one");
        folder.MakeFolder("two");
        arguments.card = folder.Path("card");
        arguments.targets = {folder.Path("one"), folder.Path("two")};
        arguments.name = "A001";
        files.SetMedium([this](const std::string& path, platform::MediumFacts& facts) {
            facts.server.clear();
            facts.disks = {path.starts_with(folder.Path("one"))   ? diskOfOne
                           : path.starts_with(folder.Path("two")) ? diskOfTwo
                                                                  : diskOfCard};
            std::erase(facts.disks, "");
        });
    }

    offload::Outcome Run(std::uint64_t farBehind = offload::SecondReading::kFarBehind) {
        tool::RunProgress progress(tool::ProgressForm::None);
        offload::Plan plan = offload::MakePlan(arguments, [] { return true; });
        return offload::Offload(plan, arguments, progress, farBehind);
    }

    /// Whether a copy is whole and its list agrees.
    [[nodiscard]] bool IsSound(const std::string& target) const {
        tool::RunProgress progress(tool::ProgressForm::None);
        offload::Inspection copy(folder.Path(target + "/A001"));
        offload::Inspect(copy, {}, progress);
        return copy.history.HasChain() && copy.IsClean() && copy.index.tree.FileCount() == 4;
    }

    TempFolder folder;
    FaultyFileSystem files;
    offload::Arguments arguments;
    std::string diskOfCard = "8:32";
    std::string diskOfOne = "8:0";
    std::string diskOfTwo = "8:16";
    platform::ScopedFileSystem scope{files};
};

} // namespace nqp2::test
