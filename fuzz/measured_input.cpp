// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// What every fuzz target has in common: an input may take memory in proportion to its size alone.
// All allocations of the process are counted, those of other libraries too; the one that passes the
// limit ends the program, so that its place is seen and the input kept.

#include "fuzz/fuzz_target.h"

#include <atomic>
#include <cerrno>
#include <limits>
#include <malloc.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define NQP2_SANITIZED 1
#endif
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define NQP2_SANITIZED 1
#endif

namespace {

#ifndef NQP2_FREE_MEMORY_MIB
#define NQP2_FREE_MEMORY_MIB 2
#endif
constexpr std::int64_t kFreeMemory = std::int64_t{NQP2_FREE_MEMORY_MIB} << 20; ///< for any input
constexpr std::int64_t kMemoryPerByte = 40;                                    ///< beyond it

std::atomic<std::int64_t> inUse{0};
std::atomic<std::int64_t> limit{std::numeric_limits<std::int64_t>::max()};

void Taken(std::size_t bytes) {
    const auto more = static_cast<std::int64_t>(bytes);
    const std::int64_t now = inUse.fetch_add(more, std::memory_order_relaxed) + more;
    if (now > limit.load(std::memory_order_relaxed)) {
        limit = std::numeric_limits<std::int64_t>::max(); // what follows allocates too
        constexpr std::string_view kBroken =
            "broken: an input takes memory in proportion to its size\n";
        static_cast<void>(!write(STDERR_FILENO, kBroken.data(), kBroken.size()));
        std::abort();
    }
}

void Returned(std::size_t bytes) {
    inUse.fetch_sub(static_cast<std::int64_t>(bytes), std::memory_order_relaxed);
}

} // namespace

// The names are the system's.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
#ifdef NQP2_SANITIZED

extern "C" {
int __sanitizer_install_malloc_and_free_hooks(void (*taken)(const volatile void*, std::size_t),
                                              void (*returned)(const volatile void*));
std::size_t __sanitizer_get_allocated_size(const volatile void* memory);
}

static void CountAllocations() {
    static const int installed = __sanitizer_install_malloc_and_free_hooks(
        [](const volatile void*, std::size_t size) { Taken(size); },
        [](const volatile void* memory) {
            Returned(memory != nullptr ? __sanitizer_get_allocated_size(memory) : 0);
        });
    if (installed == 0) {
        std::abort();
    }
}

#else

// The program's own functions go before those of the C library, for all libraries.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

static void CountAllocations() {}

static void* Counted(void* memory) {
    Taken(malloc_usable_size(memory));
    return memory;
}

#define NQP2_INTERPOSED extern "C" __attribute__((visibility("default")))

NQP2_INTERPOSED void* malloc(std::size_t size) {
    return Counted(__libc_malloc(size));
}
NQP2_INTERPOSED void* calloc(std::size_t count, std::size_t size) {
    return Counted(__libc_calloc(count, size));
}
NQP2_INTERPOSED void* realloc(void* memory, std::size_t size) {
    const std::size_t before = malloc_usable_size(memory);
    void* const moved = __libc_realloc(memory, size);
    if (moved != nullptr || size == 0) {
        Returned(before);
        Taken(malloc_usable_size(moved));
    }
    return moved;
}
NQP2_INTERPOSED void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return Counted(__libc_memalign(alignment, size));
}
NQP2_INTERPOSED void* memalign(std::size_t alignment, std::size_t size) {
    return Counted(__libc_memalign(alignment, size));
}
NQP2_INTERPOSED int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    *memory = Counted(__libc_memalign(alignment, size));
    return *memory != nullptr ? 0 : ENOMEM;
}
NQP2_INTERPOSED void free(void* memory) {
    Returned(malloc_usable_size(memory));
    __libc_free(memory);
}

#endif
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CountAllocations();
    limit = inUse + kFreeMemory + kMemoryPerByte * static_cast<std::int64_t>(size);
    nqp2::fuzz::TestInput({data, size});
    limit = std::numeric_limits<std::int64_t>::max();
    return 0;
}
