// SPDX-License-Identifier: MIT
//
// The replaced allocators and their switch.

#include "failing_allocators.h"

#include <malloc.h>
#include <sqlite3.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>

#if defined(__has_feature)
#define HAS_FEATURE(feature) __has_feature(feature)
#else
#define HAS_FEATURE(feature) 0
#endif

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || HAS_FEATURE(address_sanitizer) || \
    HAS_FEATURE(thread_sanitizer) || HAS_FEATURE(memory_sanitizer)
#define REPLACE_MALLOC 0
#else
#define REPLACE_MALLOC 1
#endif

namespace
{

// Initialised before any code runs: the first allocations come from the dynamic linker.
struct State
{
    std::atomic<long> outstanding{0};
    std::atomic<long> untilFailure{0};  // 0: never
    std::atomic<bool> stays{false};
    std::atomic<long> failed{0};
    std::atomic<long> bytes{0};
    std::atomic<long> mostBytes{0};

    bool fails()
    {
        const long left = untilFailure;
        if (left == 0)
            return false;
        if (left > 1)
        {
            untilFailure = left - 1;
            return false;
        }
        if (!stays)
            untilFailure = 0;
        ++failed;
        return true;
    }

    template <class Pointer>
    Pointer taken(Pointer pointer, std::size_t size = 0)
    {
        outstanding += pointer != nullptr ? 1 : 0;
        const long now = bytes += static_cast<long>(size);
        if (now > mostBytes)
            mostBytes = now;
        return pointer;
    }

    void released(const void* pointer, std::size_t size = 0)
    {
        outstanding -= pointer != nullptr ? 1 : 0;
        bytes -= static_cast<long>(size);
    }
};

State g_states[3];

State& stateOf(faults::Allocator allocator)
{
    return g_states[static_cast<int>(allocator)];
}

State& sqliteState = g_states[0];
State& newState = g_states[1];

sqlite3_mem_methods g_original = {};

void* sqliteMalloc(int size)
{
    return sqliteState.fails() ? nullptr : sqliteState.taken(g_original.xMalloc(size));
}

void sqliteFree(void* pointer)
{
    sqliteState.released(pointer);
    g_original.xFree(pointer);
}

void* sqliteRealloc(void* pointer, int size)
{
    return sqliteState.fails() ? nullptr : g_original.xRealloc(pointer, size);
}

const bool g_sqliteReplaced = []
{
    if (sqlite3_config(SQLITE_CONFIG_GETMALLOC, &g_original) != SQLITE_OK)
        return false;
    sqlite3_mem_methods methods = g_original;
    methods.xMalloc = sqliteMalloc;
    methods.xFree = sqliteFree;
    methods.xRealloc = sqliteRealloc;
    return sqlite3_config(SQLITE_CONFIG_MALLOC, &methods) == SQLITE_OK &&
           sqlite3_config(SQLITE_CONFIG_LOOKASIDE, 0, 0) == SQLITE_OK;
}();

}  // namespace

void* operator new(std::size_t size)
{
    void* const pointer = newState.fails() ? nullptr : std::malloc(size > 0 ? size : 1);
    if (pointer == nullptr)
        throw std::bad_alloc();
    return newState.taken(pointer, malloc_usable_size(pointer));
}

// A sanitizer's own would not call the one above.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    void* const pointer = newState.fails() ? nullptr : std::malloc(size > 0 ? size : 1);
    return newState.taken(pointer, malloc_usable_size(pointer));
}

void operator delete(void* pointer) noexcept
{
    newState.released(pointer, malloc_usable_size(pointer));
    std::free(pointer);
}

void operator delete(void* pointer, std::size_t) noexcept
{
    operator delete(pointer);
}

#if REPLACE_MALLOC

namespace
{

State& mallocState = g_states[2];

void* taken(void* pointer)
{
    if (pointer == nullptr)
        errno = ENOMEM;
    return mallocState.taken(pointer, malloc_usable_size(pointer));
}

}  // namespace

extern "C"
{
    void* __libc_malloc(size_t size);
    void* __libc_calloc(size_t count, size_t size);
    void* __libc_realloc(void* pointer, size_t size);
    void __libc_free(void* pointer);

    void* malloc(size_t size)
    {
        return taken(mallocState.fails() ? nullptr : __libc_malloc(size));
    }

    void* calloc(size_t count, size_t size)
    {
        return taken(mallocState.fails() ? nullptr : __libc_calloc(count, size));
    }

    void* realloc(void* pointer, size_t size)
    {
        if (mallocState.fails())
            return taken(nullptr);
        const size_t before = malloc_usable_size(pointer);
        void* const moved = __libc_realloc(pointer, size);
        if (moved != nullptr)
            mallocState.released(pointer, before);
        return taken(moved);
    }

    void free(void* pointer)
    {
        mallocState.released(pointer, malloc_usable_size(pointer));
        __libc_free(pointer);
    }
}

#endif  // REPLACE_MALLOC

namespace faults
{

std::ostream& operator<<(std::ostream& out, Allocator allocator)
{
    static const char* const names[] = {"SQLite's allocator", "operator new", "malloc"};
    return out << names[static_cast<int>(allocator)];
}

std::ostream& operator<<(std::ostream& out, Failure failure)
{
    return out << (failure == Failure::Once ? "one failure" : "all from there on");
}

bool isReplaced(Allocator allocator)
{
    switch (allocator)
    {
        case Allocator::Sqlite:
            return g_sqliteReplaced;
        case Allocator::OperatorNew:
            return true;
        default:
            return REPLACE_MALLOC != 0;
    }
}

Shortage::Shortage(Allocator allocator, Failure failure, long nth) : m_allocator(allocator)
{
    State& state = stateOf(allocator);
    state.stays = failure == Failure::FromThereOn;
    state.failed = 0;
    state.untilFailure = nth;
}

void Shortage::end()
{
    State& state = stateOf(m_allocator);
    state.untilFailure = 0;
    m_failed += state.failed.exchange(0);
}

long outstanding(Allocator allocator)
{
    return stateOf(allocator).outstanding;
}

Allocator lowest()
{
    return isReplaced(Allocator::Malloc) ? Allocator::Malloc : Allocator::OperatorNew;
}

HeapPeak::HeapPeak() : m_before(stateOf(lowest()).bytes)
{
    stateOf(lowest()).mostBytes = m_before;
}

long HeapPeak::bytes() const
{
    return stateOf(lowest()).mostBytes - m_before;
}

}  // namespace faults
