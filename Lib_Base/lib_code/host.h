/* host.h - the eleven services that the process which loads the library defines.
 *
 * The library only declares them; they are resolved by name from the process. All strings are NUL-terminated. The
 * library calls them on the caller's thread, keeps nothing that they return, and checks no error: they must not
 * throw, and those that a decode uses must be re-entrant where the host decodes on several threads.
 */
#ifndef SIPCODE_HOST_H
#define SIPCODE_HOST_H

#include "xml.h"

#if defined(__GNUC__)
#define SIPCODE_PRINTF(text, values) __attribute__((format(printf, text, values)))
#else
#define SIPCODE_PRINTF(text, values)
#endif

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

/* Length of a string in bytes. */
int Str_Len(const char *str);

/* 0 exactly when a equals b; whether case counts is the host's choice. */
int Str_Cmp(const char *a, const char *b);

/* 0 exactly when the first n characters of a and b agree; whether case counts is the host's choice. */
int Str_N_Cmp(const char *a, const char *b, int n);

/* 0 exactly when a and b agree ignoring case, over at most n characters and up to the terminator. */
int Str_N_Cmp_NoCase(const char *a, const char *b, int n);

/* Value of the decimal number that begins str, 0 when there is none. */
int Str_Atoi(const char *str);

/* Copies a prefix of src and terminates it; writes at most n bytes, terminator included. */
void Str_N_Copy(char *dst, const char *src, int n);

/* Returns the text from *cursor up to the first occurrence of the whole string delimiter, cuts it there in place and
 * moves *cursor behind it; the last token is the rest; then null. */
char *Str_Tok(char **cursor, const char *delimiter);

/* Returns the text between the first start marker at or after *cursor and the next end marker, cuts it there in place
 * and moves *cursor behind the end marker; null when the start marker is absent. Without an end marker the host
 * decides. Repeated calls walk a list. */
char *Str_Two_Tok(char **cursor, const char *start, const char *end);

/* Writes one trace line. level is 0 for what a sender got wrong and 1 for what was given up on; second is always
 * -1, file is always "decode.c". A null argument for "%s" must print harmlessly. */
int Log_Trace_Proc(int level, int second, const char *file, int line, const char *format, ...) SIPCODE_PRINTF(5, 6);

/* Writes one trace line; called with 0, 1, -1 for an unknown transport in the first of two Vias. */
int MT_Log_Process(int first, int second, int third, const char *format, ...) SIPCODE_PRINTF(4, 5);

/* Writes the document as terminated XML text to out and lowers *room by the bytes written. The encoders pass a zeroed
 * buffer of 4096 bytes and 4096. */
int Xml_Encode(pXmldoc document, char *out, int *room);

#undef SIPCODE_PRINTF

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif

#ifdef __cplusplus
}
#endif

#endif
