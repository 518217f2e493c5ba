/* Checks the public headers, compiled as C, against layout.inc. */
#include <assert.h>
#include <stddef.h>

#include <sipcode/decode.h>
#include <sipcode/encode.h>
#include <sipcode/safe.h>

#define RECORD(type, bytes)                                                                                            \
    static inline void layout_of_##type(void) {                                                                        \
        typedef type record;                                                                                           \
        static_assert(sizeof(record) == (bytes), #type);
#define MEMBER(name, at, bytes)                                                                                        \
    static_assert(offsetof(record, name) == (at), #name);                                                              \
    static_assert(sizeof(((record *)0)->name) == (bytes), #name);
#define FIRST MEMBER
#define END }
#define VALUE(name, number) static_assert((name) == (number), #name);

#include "layout.inc"
