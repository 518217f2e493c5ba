#include "support/recording_host.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <sipcode/host.h>
#include <strings.h>

namespace support {

Host &host() {
    thread_local Host own;
    return own;
}

namespace {

[[gnu::format(printf, 2, 0)]] void keep(const std::string &head, const char *format, va_list arguments) {
    char line[8192];
    std::vsnprintf(line, sizeof line, format, arguments);
    host().log.push_back(head + " " + line);
}

} // namespace
} // namespace support

int Str_Len(const char *str) { return static_cast<int>(std::strlen(str)); }

int Str_Cmp(const char *a, const char *b) { return support::host().folds_case ? strcasecmp(a, b) : std::strcmp(a, b); }

int Str_N_Cmp(const char *a, const char *b, int n) {
    const auto count = static_cast<std::size_t>(n);
    return support::host().folds_case ? strncasecmp(a, b, count) : std::strncmp(a, b, count);
}

int Str_N_Cmp_NoCase(const char *a, const char *b, int n) { return strncasecmp(a, b, static_cast<std::size_t>(n)); }

int Str_Atoi(const char *str) { return static_cast<int>(std::strtol(str, nullptr, 10)); }

// Uses all the room that it is given, so that a caller who states too much of it is seen.
void Str_N_Copy(char *dst, const char *src, int n) {
    const auto room = static_cast<std::size_t>(n);
    const std::size_t length = strnlen(src, room - 1);
    std::memmove(dst, src, length);
    dst[length] = '\0';
    std::memset(dst + length + 1, 0x5A, room - length - 1);
}

char *Str_Tok(char **cursor, const char *delimiter) {
    char *const token = *cursor;
    if (token == nullptr)
        return nullptr;
    const std::size_t length = std::strlen(delimiter);
    char *const end = std::strstr(token, delimiter);
    *cursor = end == nullptr ? nullptr : end + length;
    if (end != nullptr)
        *end = '\0';
    return token;
}

char *Str_Two_Tok(char **cursor, const char *start, const char *end) {
    char *const opening = std::strstr(*cursor, start);
    if (opening == nullptr)
        return nullptr;
    char *const token = opening + std::strlen(start);
    char *const closing = std::strstr(token, end);
    if (closing == nullptr)
        return nullptr;
    *cursor = closing + std::strlen(end);
    *closing = '\0';
    return token;
}

int Log_Trace_Proc(int level, int second, const char *file, int line, const char *format, ...) {
    const bool as_agreed = second == -1 && std::string_view(file) == "decode.c" && line > 0;
    va_list arguments;
    va_start(arguments, format);
    support::keep((as_agreed ? "" : "?") + std::to_string(level), format, arguments);
    va_end(arguments);
    return 0;
}

int MT_Log_Process(int first, int second, int third, const char *format, ...) {
    const bool as_agreed = first == 0 && second == 1 && third == -1;
    va_list arguments;
    va_start(arguments, format);
    support::keep(as_agreed ? "MT" : "?MT", format, arguments);
    va_end(arguments);
    return 0;
}

int Xml_Encode(pXmldoc document, char *out, int *room) {
    if (*room != 4096)
        support::host().log.push_back("? room for a document: " + std::to_string(*room));
    const int written = std::snprintf(out, static_cast<std::size_t>(*room), "<xml>%s</xml>", document->content);
    *room -= std::min(written, *room - 1);
    return 0;
}
