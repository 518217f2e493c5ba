// The host services, except those for strings, which are in host/strings.cpp. Log lines are formatted and discarded,
// which reads their arguments.
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>

#include <sipcode/host.h>

namespace {

[[gnu::format(printf, 1, 0)]] void discard(const char *format, va_list arguments) {
    char line[8192];
    std::vsnprintf(line, sizeof line, format, arguments);
}

} // namespace

int Log_Trace_Proc(int, int, const char *, int, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    discard(format, arguments);
    va_end(arguments);
    return 0;
}

int MT_Log_Process(int, int, int, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    discard(format, arguments);
    va_end(arguments);
    return 0;
}

// Every document is the same text. Its type is the error in the length that the host reports.
int Xml_Encode(pXmldoc document, char *out, int *room) {
    constexpr char text[] = "<a/>";
    std::memcpy(out, text, sizeof text);
    *room -= static_cast<int>(sizeof text - 1) + document->xtype;
    return 0;
}

// The clock stands still, so that the same record gives the same message.
extern "C" std::time_t time(std::time_t *stored) noexcept {
    constexpr std::time_t now = 1795081443;
    if (stored != nullptr)
        *stored = now;
    return now;
}
