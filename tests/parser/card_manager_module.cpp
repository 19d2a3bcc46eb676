// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Card manager libraries as life_cycle_test.cpp offers them: whole, or without its first entry.
#ifdef NQP2_WITH_INIT_ENTRY
extern "C" __attribute__((visibility("default"))) void DDP2CInit() {}
#endif
extern "C" __attribute__((visibility("default"))) void DDP2CLogSense() {}
