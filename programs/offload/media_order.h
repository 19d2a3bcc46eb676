// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/mhl/tree.h"

#include <functional>
#include <string_view>

namespace nqp2::offload {

/// What is copied first: a copy that ends halfway shows no clip whose pictures it lacks.
enum class MediaRank { Media, Rest };

/// Of a file, by its name.
MediaRank MediaRankOf(std::string_view name);

/// Calls `visit` with everything below the scope, a folder before what is in it, the entries of a
/// folder together, its files first.
void ForEachInOrder(const mhl::Tree& tree, const std::function<void(mhl::NodeId)>& visit);

} // namespace nqp2::offload
