// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/program.h"

int main(int count, char** words) {
    return nqp2::offload::RunProgram(count, words);
}
