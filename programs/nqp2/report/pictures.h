// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/card_scan.h"
#include "NQP2ParserU/SmallPictures.h"

#include <string>
#include <unordered_map>

namespace nqp2::report {

/// Pictures by their clips; of a clip without one the reason, where there is one.
struct Pictures {
    std::unordered_map<const _tag_P2Clip*, SmallPicture> byClip;
    std::string remark; ///< why the rest has none, "" when all were asked for
};

/// Lets the worker make a picture of each clip: of its icon, else of a frame of its proxy or its
/// video. A file that ends the worker is left out, and the worker is started again. Throws nothing
/// but for want of memory; may run beside other reading.
Pictures TakePictures(const tool::CardScans& scans, const std::string& worker);

} // namespace nqp2::report
