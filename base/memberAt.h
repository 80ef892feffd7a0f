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
