// The append primitive that hosts format their own pieces with.
#include <cstdarg>
#include <cstdio>

#include "encode.h"

void MSG_Sprintf(char **buf, const char *fmt, ...) {
    va_list values;
    va_start(values, fmt);
    const int written = std::vsprintf(*buf, fmt, values);
    va_end(values);
    if (written >= 0)
        *buf += written;
}
