// Checks the public headers, compiled as C++, against layout.inc.
#include "layout.c"

#undef RECORD
#undef FIRST
#undef MEMBER
#undef END
#undef VALUE

// A structured binding must name every member, so a member that layout.inc lacks is a compile error.
#define RECORD(type, bytes)                                                                                            \
    static inline void members_of_##type(const type &record) {                                                         \
        [[maybe_unused]] const auto &[
#define FIRST(name, at, bytes) name
#define MEMBER(name, at, bytes) , name
#define END                                                                                                            \
    ] = record;                                                                                                        \
    }
#define VALUE(name, number)

#include "layout.inc"
