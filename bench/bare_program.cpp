// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Links what nqp2 links and returns at once: the least that starting nqp2 can take.

int main() {
    return 0;
}
