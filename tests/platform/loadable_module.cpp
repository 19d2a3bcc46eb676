// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// The library that module_test.cpp loads.
extern "C" __attribute__((visibility("default"))) int LoadableModuleAnswer() {
    return 42;
}
