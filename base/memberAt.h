#pragma once

#include <cstddef>

// Pins a member of a structure that goes byte for byte to others: into files, buffers, processes.
#define VDR_MEMBER_AT(Type, member, at, size)                                       \
    static_assert(offsetof(Type, member) == (at) && sizeof(Type::member) == (size), \
                  "others find " #Type "::" #member " at " #at ", " #size " bytes")

// Two structures of which one is copied over the other.
#define VDR_MEMBER_AS_IN(Type, Other, member)                            \
    static_assert(offsetof(Type, member) == offsetof(Other, member) &&   \
                          sizeof(Type::member) == sizeof(Other::member), \
                  #Type "::" #member " stands where " #Other " has it")

// The same for classes with virtual operations, whose members' places every compiler that we build
// with knows, though the language does not promise it. Private members: from inside the class.
#define VDR_CLASS_MEMBER_AT(Type, member, at, size)                                         \
    _Pragma("GCC diagnostic push") _Pragma("GCC diagnostic ignored \"-Winvalid-offsetof\"") \
            VDR_MEMBER_AT(Type, member, at, size);                                          \
    _Pragma("GCC diagnostic pop") static_assert(true)
