# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""The parts of make_card.py: formats, clip metadata, pictures and the card's files."""
