/* safe.h - entry points for hosts that face the network: text by its length, output by its room, records from anyone.
 *
 * They share the code of decode.h and encode.h and need no trust in their input. Use them for whatever comes from or goes to a
 * socket; the plain entry points suit text and records that the process made itself.
 *
 * Threads: nothing here keeps state between calls; any number of threads may call at once, each with buffers, records and
 * reports of its own, provided that the host's services (host.h) allow it. Nothing is allocated.
 */
#ifndef SIPCODE_SAFE_H
#define SIPCODE_SAFE_H

#include <stddef.h>

#include "code.h"

#ifdef __cplusplus
extern "C" {
#define SIPCODE_ENUM_INT : int
#else
#define SIPCODE_ENUM_INT
#endif

#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

/* Longest text that is decoded, in bytes. */
#define SIP_LONGEST_MESSAGE 4095

/* ------------------------------------------------------------------------------------------------------------------
 * Decoding
 */

typedef enum SIP_DECODE_OUTCOME SIPCODE_ENUM_INT {
    SIP_DECODE_DONE = 1,
    SIP_DECODE_NULL_ARGUMENT = -1, /* data or record is null */
    SIP_DECODE_NO_START_LINE = -2, /* the text is empty, or its first line holds fewer than two words */
    SIP_DECODE_BAD_STATUS = -3,    /* a status line whose status is shorter than three characters */
    SIP_DECODE_BAD_URI = -4,       /* a request line whose URI begins with "<" */
    SIP_DECODE_BAD_PROTOCOL = -5,  /* a request line that does not end in "SIP/2.0" */
    SIP_DECODE_NO_HEADER = -6,     /* no header line follows the start line */
    SIP_DECODE_NO_CALL_ID = -7,
    SIP_DECODE_NO_CSEQ = -8,
    SIP_DECODE_BAD_CSEQ = -9, /* the CSeq does not begin with a number */
    SIP_DECODE_NO_VIA = -10
} SIP_DECODE_OUTCOME;

/* One value that was longer than its place. */
typedef struct SIP_DECODE_CUT {
    int member;          /* offset in SIP_CODE_MSG of the member that took it, -1 when it was cut before it was read */
    unsigned int length; /* characters that stood in the message */
    unsigned int kept;   /* characters that were kept */
    int at;              /* where the value stands, an offset in data; -1 when it was read from a copy or joined, */
    int line;            /* and line and column, counted from 1, 0 when at is -1 */
    int column;
} SIP_DECODE_CUT;

#define SIP_DECODE_CUTS 16

typedef struct SIP_DECODE_REPORT {
    SIP_DECODE_OUTCOME outcome;
    const char *header; /* name of the header that is missing or broken, a constant text; "" when none is */
    int at;             /* where a refused message went wrong: offset in data, -1 for an accepted one, */
    int line;           /* and line and column, counted from 1, else 0. A missing header is missing at the end of */
    int column;         /* the header section */
    int left_out;       /* 1 when text behind SIP_LONGEST_MESSAGE characters was left out, else 0 */
    int cut_count;      /* values that were longer than their place */
    /* The first of them, min(cut_count, SIP_DECODE_CUTS), in the order of decoding. */
    SIP_DECODE_CUT cuts[SIP_DECODE_CUTS];
} SIP_DECODE_REPORT;

/* Decodes the length bytes at data into record, as Sip_Decode does the same text.
 *
 * data    need not be terminated, and nothing behind its length is read; a NUL ends the text early. Never changed.
 * record  need not be cleared: every member is as Sip_Decode leaves it in a zeroed record, up to the terminator of a text.
 * report  may be null. Filled on every outcome but for the entries of cuts that cut_count does not reach.
 *
 * Returns the outcome: SIP_DECODE_DONE (1), or a negative one. A refused record may be filled in part, as by Sip_Decode.
 */
int SIP_Decode_Buffer(const char *data, size_t length, SIP_CODE_MSG *record, SIP_DECODE_REPORT *report);

/* ------------------------------------------------------------------------------------------------------------------
 * Messages in a stream (RFC 3261 section 18.3)
 *
 *   CR LF                                     SIP_FRAME_KEEP_ALIVE: line ends before a message (RFC 5626 section 4.4.1)
 *   INVITE ... CR LF                          SIP_FRAME_MORE: the empty line is still to come
 *   INVITE ... Content-Length: 4 CR LF CR LF
 *   v=0                                       SIP_FRAME_MORE: one byte of the body is still to come
 *   INVITE ... v=0 LF BYE ...                 SIP_FRAME_COMPLETE: *message_length ends before BYE
 *
 * Lines end, and the header section ends, where the decoder ends them. Content-Length may be written in its compact form "l",
 * with blanks before the colon, and more than once when all agree; it counts at the start of any line of the header section, of
 * one that a comma joins to another as well. A CR that is no part of a line end is none: at the start of a line it makes that
 * line empty, also the first one, elsewhere it ends nothing.
 */
typedef enum SIP_FRAME_OUTCOME SIPCODE_ENUM_INT {
    SIP_FRAME_KEEP_ALIVE = 2, /* the first *message_length bytes are line ends, LF or CR LF: drop them */
    SIP_FRAME_COMPLETE = 1,   /* the first *message_length bytes are one message */
    SIP_FRAME_MORE = 0,       /* call again with more bytes behind these */

    /* What stands here can never become a message. Where its end is known all the same, *message_length tells how many bytes
     * to drop to get behind it (they need not all be here yet); else it is 0 and the stream is lost. */
    SIP_FRAME_NULL_ARGUMENT = -1, /* data or message_length is null */
    SIP_FRAME_LONG_HEADERS = -2,  /* no empty line within SIP_LONGEST_MESSAGE bytes */
    SIP_FRAME_LONG_MESSAGE = -3,  /* header section and body are longer than SIP_LONGEST_MESSAGE; the end is known */
    SIP_FRAME_NO_LENGTH = -4,     /* no Content-Length, which a stream demands */
    SIP_FRAME_BAD_LENGTH = -5,    /* one that is no number from 0 to 2147483647, or has a CR in its line */
    SIP_FRAME_DIFFERENT_LENGTHS = -6,
    SIP_FRAME_NUL = -7 /* a NUL, at which the decoder would stop; in the body the end is known */
} SIP_FRAME_OUTCOME;

/* Tells whether a message stands at the start of the length bytes at data. Returns a SIP_FRAME_OUTCOME. *message_length is set
 * on every outcome, to 0 where nothing else is said. */
int SIP_Frame_Stream(const char *data, size_t length, size_t *message_length);

/* ------------------------------------------------------------------------------------------------------------------
 * Encoding
 */

typedef enum SIP_ENCODE_ERROR SIPCODE_ENUM_INT {
    SIP_ENCODE_NULL_ARGUMENT = -1, /* buffer or record is null */
    SIP_ENCODE_BAD_METHOD = -2,    /* method is outside 1 to 48; nothing is told on standard output */
    SIP_ENCODE_NO_ROOM = -3,       /* message and terminator are longer than size */
    SIP_ENCODE_NO_BODY = -4,       /* content.use is 1, and no body source holds or the XML document is null */
    SIP_ENCODE_BROKEN_TEXT = -5    /* a text that would break the message apart, see below */
} SIP_ENCODE_ERROR;

/* Write the message that SIP_Encode_Message_Reuqest and SIP_Encode_Message_Response write, into the size bytes at buffer.
 *
 * Refused is a text that is to be written and would not stay in its place: a CR or LF in any member but a body or a section of
 * a session description; a double quote or a backslash between double quotes; "<", ">" or a double quote between angle
 * brackets; a blank in the request line; a comma as the last character of a line, which the decoder takes to go on in the next
 * one; a DTMF key (info.key) that is not one character long, and an XML document whose length is not the one that Xml_Encode
 * tells, since either makes Content-Length wrong.
 *
 * Returns the length of the text, its terminator not counted, or a negative SIP_ENCODE_ERROR. Then buffer holds an empty text
 * (when it is not null and size is not 0) and the record is as it was.
 */
int SIP_Encode_Request_Buffer(char *buffer, size_t size, SIP_CODE_MSG *record);
int SIP_Encode_Response_Buffer(char *buffer, size_t size, SIP_CODE_MSG *record);

#undef SIPCODE_ENUM_INT

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif

#ifdef __cplusplus
}
#endif

#endif
