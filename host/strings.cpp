// The string services. They keep no state, so any number of threads may decode at once.
//
// host.h leaves some choices. Here comparisons are case-sensitive, except that Str_N_Cmp_NoCase folds ASCII letters in
// every locale. An empty delimiter or marker is never found. Without an end marker Str_Two_Tok returns null and leaves
// the cursor where it was.
#include <cstring>
#include <limits>

#include "host.h"

namespace {

unsigned char fold(char c) { return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c); }

char *find(char *text, const char *wanted) { return *wanted == '\0' ? nullptr : std::strstr(text, wanted); }

} // namespace

int Str_Len(const char *str) { return static_cast<int>(std::strlen(str)); }

int Str_Cmp(const char *a, const char *b) { return std::strcmp(a, b); }

int Str_N_Cmp(const char *a, const char *b, int n) { return n <= 0 ? 0 : std::strncmp(a, b, static_cast<size_t>(n)); }

int Str_N_Cmp_NoCase(const char *a, const char *b, int n) {
    for (int i = 0; i < n; ++i) {
        if (fold(a[i]) != fold(b[i]))
            return fold(a[i]) - fold(b[i]);
        if (a[i] == '\0')
            return 0;
    }
    return 0;
}

int Str_Atoi(const char *str) {
    // As strtoll reads it, in half its time: into 64 bits, saturating. The low 32 are kept.
    while (*str == ' ' || (*str >= '\t' && *str <= '\r'))
        ++str;
    const bool negative = *str == '-';
    if (*str == '-' || *str == '+')
        ++str;
    long long value = 0;
    for (; *str >= '0' && *str <= '9'; ++str) {
        const int digit = negative ? '0' - *str : *str - '0';
        if (__builtin_mul_overflow(value, 10, &value) || __builtin_add_overflow(value, digit, &value))
            return static_cast<int>(negative ? std::numeric_limits<long long>::min()
                                             : std::numeric_limits<long long>::max());
    }
    return static_cast<int>(value);
}

void Str_N_Copy(char *dst, const char *src, int n) {
    if (n <= 0)
        return;
    const size_t length = strnlen(src, static_cast<size_t>(n - 1));
    std::memmove(dst, src, length);
    dst[length] = '\0';
}

char *Str_Tok(char **cursor, const char *delimiter) {
    char *token = *cursor;
    if (token == nullptr)
        return nullptr;
    // Measured before the cut, because the delimiter may be part of the same text.
    const size_t length = std::strlen(delimiter);
    char *end = find(token, delimiter);
    *cursor = end == nullptr ? nullptr : end + length;
    if (end != nullptr)
        *end = '\0';
    return token;
}

char *Str_Two_Tok(char **cursor, const char *start, const char *end) {
    if (*cursor == nullptr)
        return nullptr;
    char *opening = find(*cursor, start);
    if (opening == nullptr)
        return nullptr;
    char *text = opening + std::strlen(start);
    char *closing = find(text, end);
    if (closing == nullptr)
        return nullptr;
    *cursor = closing + std::strlen(end);
    *closing = '\0';
    return text;
}
