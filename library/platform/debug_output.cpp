// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/DebugOutput.h"

#include "platform/diagnostics.h"
#include "platform/hook.h"
#include "platform/unicode.h"

#include <cstdio>
#include <string>
#include <utility>

namespace nqp2 {
namespace {

using TextHook = platform::Hook<void(const CString&)>;

// Never destroyed: a host's static objects may still report something while the process ends.
TextHook& DebugHook() {
    static TextHook& hook = *new TextHook;
    return hook;
}

TextHook& MessageBoxHook() {
    static TextHook& hook = *new TextHook;
    return hook;
}

void PrintOnStandardError(const CString& text) {
    const std::string line = platform::Utf8FromText(text.View()) + '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace

TextSink SetDebugOutput(TextSink sink) noexcept {
    return DebugHook().Exchange(std::move(sink));
}

TextSink SetMessageBoxSink(TextSink sink) noexcept {
    return MessageBoxHook().Exchange(std::move(sink));
}

namespace platform {

void OutputDebugStringW(const wchar_t* text) {
    if (const TextSink sink = DebugHook().Get()) {
        sink(CString(text));
    }
}

void MessageBoxW(const wchar_t* text) {
    const TextSink sink = MessageBoxHook().Get();
    sink ? sink(CString(text)) : PrintOnStandardError(text);
}

} // namespace platform
} // namespace nqp2
