/* host.h - the eleven services that the process which loads the library defines.
 *
 * The library only declares them; they are resolved by name from the process. All strings are NUL-terminated. The
 * library calls them on the caller's thread, keeps nothing that they return, and checks for no errors. They must not
 * throw. Those that a decode uses must be re-entrant if the host decodes on several threads.
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

/* Returns the length of a string in bytes. */
int Str_Len(const char *str);

/* Returns 0 if and only if a equals b. The host chooses whether case matters. */
int Str_Cmp(const char *a, const char *b);

/* Returns 0 if and only if the first n characters of a and b are equal. The host chooses whether case matters. */
int Str_N_Cmp(const char *a, const char *b, int n);

/* Returns 0 if and only if a and b are equal, ignoring case, up to the terminator or at most n characters. */
int Str_N_Cmp_NoCase(const char *a, const char *b, int n);

/* Returns the value of the decimal number at the start of str, 0 if there is none. */
int Str_Atoi(const char *str);

/* Copies a prefix of src and terminates it. Writes at most n bytes, terminator included. */
void Str_N_Copy(char *dst, const char *src, int n);

/* Returns the text from *cursor up to the next occurrence of the whole string delimiter, terminates it there in place
 * and moves *cursor past the delimiter. The last token is the rest of the text; after it, returns null. */
char *Str_Tok(char **cursor, const char *delimiter);

/* Returns the text between the first start marker at or after *cursor and the next end marker, terminates it there in
 * place and moves *cursor past the end marker. Returns null if there is no start marker. If there is no end marker, the
 * host decides. Repeated calls walk a list. */
char *Str_Two_Tok(char **cursor, const char *start, const char *end);

/* Writes one trace line. level is 0 for an error of the sender and 1 for something the library gave up on. second is
 * always -1 and file is always "decode.c". A null argument for "%s" must print harmlessly. */
int Log_Trace_Proc(int level, int second, const char *file, int line, const char *format, ...) SIPCODE_PRINTF(5, 6);

/* Writes one trace line. Called with 0, 1, -1 for an unknown transport in the first of two Vias. */
int MT_Log_Process(int first, int second, int third, const char *format, ...) SIPCODE_PRINTF(4, 5);

/* Writes the document as terminated XML text to out and subtracts the bytes written from *room. The encoders pass a
 * zeroed buffer of 4096 bytes and a *room of 4096. */
int Xml_Encode(pXmldoc document, char *out, int *room);

#undef SIPCODE_PRINTF

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif

#ifdef __cplusplus
}
#endif

#endif
