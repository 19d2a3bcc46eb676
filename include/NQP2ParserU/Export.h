// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

/// @namespace nqp2
/// What the library offers beside the classes and records of its interface.

/// @def NQP2_API
/// Marks what the shared library exports; everything else stays hidden.
/// NQP2_STATIC is defined by builds that link the objects directly (tests, fuzzers).
#if defined(NQP2_STATIC)
#define NQP2_API
#elif defined(_WIN32)
#if defined(NQP2_BUILDING)
#define NQP2_API __declspec(dllexport)
#else
#define NQP2_API __declspec(dllimport)
#endif
#else
#define NQP2_API __attribute__((visibility("default")))
#endif
