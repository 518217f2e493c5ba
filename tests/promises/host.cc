// The eleven services with nothing beneath them: no heap, no output, no locale, no errno, and hardly any stack.
#include <cstring>

#include <sipcode/host.h>

#include "digest.h"

namespace promises {

thread_local Digest *log_digest = nullptr;

namespace {

unsigned char fold(char c) { return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c); }

int told(int level, const char *format) {
    if (log_digest != nullptr) {
        log_digest->add(&level, sizeof level);
        log_digest->add(format, std::strlen(format));
    }
    return 0;
}

} // namespace
} // namespace promises

int Str_Len(const char *str) { return static_cast<int>(std::strlen(str)); }

int Str_Cmp(const char *a, const char *b) { return std::strcmp(a, b); }

int Str_N_Cmp(const char *a, const char *b, int n) { return std::strncmp(a, b, static_cast<std::size_t>(n)); }

int Str_N_Cmp_NoCase(const char *a, const char *b, int n) {
    for (int i = 0; i < n; ++i)
        if (promises::fold(a[i]) != promises::fold(b[i]) || a[i] == '\0')
            return promises::fold(a[i]) - promises::fold(b[i]);
    return 0;
}

int Str_Atoi(const char *str) {
    unsigned number = 0;
    for (; *str >= '0' && *str <= '9'; ++str)
        number = number * 10 + static_cast<unsigned>(*str - '0');
    return static_cast<int>(number);
}

void Str_N_Copy(char *dst, const char *src, int n) {
    const std::size_t length = strnlen(src, static_cast<std::size_t>(n) - 1);
    std::memmove(dst, src, length);
    dst[length] = '\0';
}

char *Str_Tok(char **cursor, const char *delimiter) {
    char *const token = *cursor;
    if (token == nullptr)
        return nullptr;
    char *const end = std::strstr(token, delimiter);
    *cursor = end == nullptr ? nullptr : end + std::strlen(delimiter);
    if (end != nullptr)
        *end = '\0';
    return token;
}

char *Str_Two_Tok(char **cursor, const char *start, const char *end) {
    char *const opening = std::strstr(*cursor, start);
    char *const closing = opening == nullptr ? nullptr : std::strstr(opening + std::strlen(start), end);
    if (closing == nullptr)
        return nullptr;
    *cursor = closing + std::strlen(end);
    *closing = '\0';
    return opening + std::strlen(start);
}

int Log_Trace_Proc(int level, int, const char *, int, const char *format, ...) { return promises::told(level, format); }

int MT_Log_Process(int, int, int, const char *format, ...) { return promises::told(-1, format); }

int Xml_Encode(pXmldoc document, char *out, int *room) {
    const std::size_t length = strnlen(document->content, sizeof document->content);
    std::memcpy(out, document->content, length);
    out[length] = '\0';
    *room -= static_cast<int>(length);
    return 0;
}
