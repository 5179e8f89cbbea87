// Test-only replacement of the global allocation functions: every form of new and delete
// goes to malloc and free, with counters and failure injection, so that a test can count
// what an operation allocates and watch the fallbacks the library takes when memory runs
// out.
//
// The replacement functions are defined here, not inline (the language forbids inline
// replacements): include this header in exactly one source file of a test program.
// Under valgrind, run such a program with --soname-synonyms=somalloc=nouserintercepts so
// that these replacements stay in force.
//
// Counters and the failure state are atomics, so the functions may be called from any
// thread; a failure guard itself is meant to be armed by one thread at a time.
#ifndef NOX_TEST_ALLOCATOR_H
#define NOX_TEST_ALLOCATOR_H

#include <atomic>
#include <cstdlib>
#include <new>

namespace nox_test {

/// The forms of allocation a failure guard acts on: the nothrow forms (which the library
/// uses for its own memory), the throwing forms (which the standard library's strings
/// and containers use), or both.
enum class AllocationForms { Nothrow, Throwing, All };

namespace detail {

inline std::atomic<long> allocations{0};     // requests granted, every form
inline std::atomic<long> liveAllocations{0}; // granted and not yet released
inline std::atomic<long> nothrowRequests{0}; // nothrow requests, granted or refused
inline std::atomic<long> refusals{0};        // requests refused
inline std::atomic<bool> armed{false};
inline std::atomic<int> forms{static_cast<int>(AllocationForms::All)};
inline std::atomic<long> grants{0};     // requests still granted before the next refusal
inline std::atomic<bool> refuseOne{false}; // after one refusal, grant everything again

inline bool Concerns(AllocationForms form) {
    const auto armedForms = static_cast<AllocationForms>(forms.load());
    return armedForms == AllocationForms::All || armedForms == form;
}

// Decides whether a request of the given form is refused; counts down the grants.
inline bool Refuse(AllocationForms form) {
    if (!armed.load() || !Concerns(form))
        return false;
    long left = grants.load();
    while (left > 0) {
        if (grants.compare_exchange_weak(left, left - 1))
            return false;
    }
    if (refuseOne.load())
        armed.store(false);
    ++refusals;
    return true;
}

inline void *Allocate(std::size_t n, AllocationForms form) {
    if (form == AllocationForms::Nothrow)
        ++nothrowRequests;
    if (Refuse(form))
        return nullptr;
    void *p = std::malloc(n ? n : 1);
    if (p) {
        ++allocations;
        ++liveAllocations;
    }
    return p;
}

inline void *AllocateOrThrow(std::size_t n) {
    if (void *p = Allocate(n, AllocationForms::Throwing))
        return p;
    throw std::bad_alloc();
}

// Kept out of line so that the compiler does not pair the free with the replaced
// operator new in the same translation unit and warn about a mismatch.
__attribute__((noinline)) inline void Release(void *p) noexcept {
    if (!p)
        return;
    --liveAllocations;
    std::free(p);
}

} // namespace detail

/// Allocations granted so far, every form.
inline long AllocationCount() { return detail::allocations.load(); }
/// Allocations granted and not yet released.
inline long LiveAllocationCount() { return detail::liveAllocations.load(); }
/// Nothrow requests so far, granted or refused.
inline long NothrowRequestCount() { return detail::nothrowRequests.load(); }
/// Requests refused so far.
inline long RefusalCount() { return detail::refusals.load(); }

/// While it lives (or until End), requests of `forms` are granted `grants` more times and
/// then refused: every later one (RefuseAll) or only the next one (RefuseOne), after which
/// everything is granted again.
class AllocationFailure {
public:
    enum Then { RefuseAll, RefuseOne };

    explicit AllocationFailure(AllocationForms forms, long grants = 0, Then then = RefuseAll) {
        detail::forms.store(static_cast<int>(forms));
        detail::grants.store(grants);
        detail::refuseOne.store(then == RefuseOne);
        detail::armed.store(true);
    }
    ~AllocationFailure() { End(); }
    AllocationFailure(const AllocationFailure &) = delete;
    AllocationFailure &operator=(const AllocationFailure &) = delete;

    /// Grants every request from now on.
    void End() { detail::armed.store(false); }
};

} // namespace nox_test

void *operator new(std::size_t n) { return nox_test::detail::AllocateOrThrow(n); }
void *operator new[](std::size_t n) { return nox_test::detail::AllocateOrThrow(n); }
void *operator new(std::size_t n, const std::nothrow_t &) noexcept {
    return nox_test::detail::Allocate(n, nox_test::AllocationForms::Nothrow);
}
void *operator new[](std::size_t n, const std::nothrow_t &) noexcept {
    return nox_test::detail::Allocate(n, nox_test::AllocationForms::Nothrow);
}
void operator delete(void *p) noexcept { nox_test::detail::Release(p); }
void operator delete[](void *p) noexcept { nox_test::detail::Release(p); }
void operator delete(void *p, std::size_t) noexcept { nox_test::detail::Release(p); }
void operator delete[](void *p, std::size_t) noexcept { nox_test::detail::Release(p); }
void operator delete(void *p, const std::nothrow_t &) noexcept { nox_test::detail::Release(p); }
void operator delete[](void *p, const std::nothrow_t &) noexcept { nox_test::detail::Release(p); }

#endif
