#pragma once

#include <cstddef>
#include <cstring>

// Pins the virtual operations of an interface to their places in its table, by which other
// binaries call them. Nothing of it runs: no constant expression may look into a pointer to a
// member, but an optimiser sees through it, and a call to misplaced() that remains does not
// compile. gcc optimises the pinning function in every build, clang in all but those without
// optimisation.
namespace zk::detail {

#if defined(__has_attribute)
#if __has_attribute(error)
#define VDR_CALL_IS_ERROR(text) __attribute__((error(text)))
#endif
#endif

#if defined(VDR_CALL_IS_ERROR) && !defined(__clang__)
#define VDR_PINNING __attribute__((used, optimize("O1")))
#elif defined(VDR_CALL_IS_ERROR) && defined(__OPTIMIZE__)
#define VDR_PINNING __attribute__((used))
#endif

#ifdef VDR_PINNING
VDR_CALL_IS_ERROR("a virtual operation has left its place") void misplaced();

template <typename Operation>
__attribute__((always_inline)) inline size_t placeOf(Operation operation) {
    size_t offset = 0;  // and one on some processors, where it tells that the operation is virtual
    std::memcpy(&offset, &operation, sizeof(offset));
    return offset / sizeof(void*);
}

template <typename... Operations>
__attribute__((always_inline)) inline void requirePlaces(size_t place, Operations... operations) {
    ((placeOf(operations) == place++ ? void() : misplaced()), ...);
}
#endif

}  // namespace zk::detail

// After the interface, in its namespace: its operations in order, the first at place `first`.
#ifdef VDR_PINNING
#define VDR_PIN_OPERATIONS(Interface, first, ...)          \
    VDR_PINNING inline void pinOperationsOf##Interface() { \
        ::zk::detail::requirePlaces(first, __VA_ARGS__);   \
    }                                                      \
    static_assert(true)
#else
#define VDR_PIN_OPERATIONS(Interface, first, ...) static_assert(true)
#endif
