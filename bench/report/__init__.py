# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""What scripts/bench measures, how the figures are got, and how they are shown."""
