// The host of the measurements. Each service is a function of the C library or does nothing, so that the figures are
// those of the codec. Unlike the reference host, it drops log lines.
#include <cstdlib>
#include <cstring>

#include <sipcode/host.h>
#include <strings.h>

int Str_Len(const char *str) { return static_cast<int>(std::strlen(str)); }

int Str_Cmp(const char *a, const char *b) { return std::strcmp(a, b); }

int Str_N_Cmp(const char *a, const char *b, int n) { return std::strncmp(a, b, static_cast<size_t>(n)); }

int Str_N_Cmp_NoCase(const char *a, const char *b, int n) { return strncasecmp(a, b, static_cast<size_t>(n)); }

int Str_Atoi(const char *str) { return std::atoi(str); }

void Str_N_Copy(char *dst, const char *src, int n) {
    const size_t length = strnlen(src, static_cast<size_t>(n) - 1);
    std::memcpy(dst, src, length);
    dst[length] = '\0';
}

char *Str_Tok(char **cursor, const char *delimiter) {
    char *token = *cursor;
    if (token == nullptr)
        return nullptr;
    char *end = std::strstr(token, delimiter);
    *cursor = end == nullptr ? nullptr : end + std::strlen(delimiter);
    if (end != nullptr)
        *end = '\0';
    return token;
}

char *Str_Two_Tok(char **cursor, const char *start, const char *end) {
    char *opening = std::strstr(*cursor, start);
    if (opening == nullptr)
        return nullptr;
    char *text = opening + std::strlen(start);
    char *closing = std::strstr(text, end);
    if (closing == nullptr)
        return nullptr;
    *cursor = closing + std::strlen(end);
    *closing = '\0';
    return text;
}

int Log_Trace_Proc(int, int, const char *, int, const char *, ...) { return 0; }

int MT_Log_Process(int, int, int, const char *, ...) { return 0; }

int Xml_Encode(pXmldoc, char *out, int *) {
    out[0] = '\0';
    return 0;
}
