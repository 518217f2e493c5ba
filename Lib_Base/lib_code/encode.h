/* encode.h - the codec record into SIP text, and the builders of the values that a new message needs. */
#ifndef SIPCODE_ENCODE_H
#define SIPCODE_ENCODE_H

#include "code.h"

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#pragma GCC visibility push(default)
#define SIPCODE_FORMAT(text, values) __attribute__((format(printf, text, values)))
#else
#define SIPCODE_FORMAT(text, values)
#endif

/* Appends formatted text (as vsprintf) and its terminator at *buf, then moves *buf to the terminator, so that calls follow
 * one another. A format that fails leaves *buf where it was. There is no bound: the caller guarantees room. */
void MSG_Sprintf(char **buf, const char *fmt, ...) SIPCODE_FORMAT(2, 3);

#undef SIPCODE_FORMAT

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif

#ifdef __cplusplus
}
#endif

#endif
