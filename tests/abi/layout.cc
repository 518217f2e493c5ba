// Holds the public headers, as a C++ host sees them, to layout.inc.
#include "layout.c"

#undef RECORD
#undef FIRST
#undef MEMBER
#undef END
#undef VALUE

// A structured binding names each member of a record once: one that layout.inc lacks does not compile.
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
