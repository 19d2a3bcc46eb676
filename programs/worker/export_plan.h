// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/transfer.h"

namespace nqp2::worker {

/// Decides under which names clips come onto the card that the transaction has open, reserves these
/// names and lists what is to be copied, the metadata of all clips last.
///
/// A clip that the card holds already, under whatever name, with its identifier and content, or the
/// beginning of one without its metadata, is not copied again. The others keep their names where
/// these are free. Clips of one take refer to each other by name: where one that the card holds
/// would have to refer to another name now, the whole take is copied under new names.
Outcome PlanExport(copy::Transaction& transaction, std::vector<SourceClip>& clips,
                   copy::Copier& copier, std::vector<copy::Item>& items, TransferSizes& sizes);

} // namespace nqp2::worker
