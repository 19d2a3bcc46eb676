// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/plan.h"

#include <string>

/// Whether targets are places for copies of the card. What says no throws tool::Failure.
namespace nqp2::offload {

/// Before the card is walked: no two targets are one folder, none is in the card.
void RequireOwnPlaces(const Plan& plan);

/// Of a folder of the card, which is reached by the walk: it is no target, by whatever path.
void RequireOutside(const Plan& plan, const std::string& path, const platform::FileInfo& folder);

/// With the copies' places known: none is the card, holds it, or lies in another.
void RequireApart(const Plan& plan);

/// Of the file that takes the log, "" for none: its folder is there, and neither in the card nor in
/// a copy.
void RequireOwnLog(const Plan& plan, const std::string& log);

/// Free space, sizes of files, names that differ in letter case alone, media that are read-only.
void RequireRoom(const Plan& plan);

/// Of targets that are not on disks of their own, or not known to be.
void WarnOfSharedDisks(Plan& plan);

} // namespace nqp2::offload
