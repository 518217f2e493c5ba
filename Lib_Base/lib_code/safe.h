/* safe.h - entry points for hosts that face the network: input of a given length, bounded output.
 *
 * They accept untrusted input and share the code of decode.h and encode.h. Use them for everything that comes from a
 * socket or goes to one. The plain entry points suit text and records that the process made itself.
 *
 * Threads: nothing here keeps state between calls. Any number of threads may call at once if each has its own
 * buffers, records and reports and the host's services (host.h) allow it. Nothing is allocated.
 */
#ifndef SIPCODE_SAFE_H
#define SIPCODE_SAFE_H

#include <stddef.h>
#include <stdint.h>

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

/* One value that was longer than its member. */
typedef struct SIP_DECODE_CUT {
    int member;          /* offset of its member in SIP_CODE_MSG; -1 if it was cut before it was read */
    unsigned int length; /* characters in the message */
    unsigned int kept;   /* characters that were kept */
    int at;              /* offset of the value in data; -1 if it was read from a copy or from joined lines */
    int line;            /* line and column, counted from 1; 0 if at is -1 */
    int column;
} SIP_DECODE_CUT;

#define SIP_DECODE_CUTS 16

typedef struct SIP_DECODE_REPORT {
    SIP_DECODE_OUTCOME outcome;
    const char *header; /* name of the missing or broken header, a constant text; "" if there is none */
    int at;             /* offset in data of the error in a refused message, or of the end of the header */
    int line;           /* section if a header is missing; line and column, counted from 1. An accepted */
    int column;         /* message has -1, 0 and 0 */
    int left_out;       /* 1 if text after the first SIP_LONGEST_MESSAGE characters was ignored, else 0 */
    int cut_count;      /* values that were longer than their members */
    /* The first of them, min(cut_count, SIP_DECODE_CUTS), in the order of decoding. */
    SIP_DECODE_CUT cuts[SIP_DECODE_CUTS];
} SIP_DECODE_REPORT;

/* Decodes the length bytes at data into record, as Sip_Decode decodes the same text.
 *
 * data    need not be terminated. Nothing after its length is read, and a NUL ends the text early. It is not changed.
 * record  need not be cleared: every member is as Sip_Decode leaves it in a zeroed record, up to the terminator of a
 *         text.
 * report  may be null. It is filled on every outcome, except the entries of cuts from cut_count on.
 *
 * Returns the outcome: SIP_DECODE_DONE (1) or a negative one. After a refusal the record may be filled in part, as by
 * Sip_Decode.
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
 * Lines and the header section end where the decoder ends them. Content-Length may have its compact form "l" and
 * blanks before the colon. It may appear more than once if all its values agree. It counts at the start of any line
 * of the header section, even of a line that a comma joins to the one before. A CR without LF does not end a line. At
 * the start of a line, the first one included, it makes that line empty.
 */
typedef enum SIP_FRAME_OUTCOME SIPCODE_ENUM_INT {
    SIP_FRAME_KEEP_ALIVE = 2, /* the first *message_length bytes are line ends, LF or CR LF: drop them */
    SIP_FRAME_COMPLETE = 1,   /* the first *message_length bytes are one message */
    SIP_FRAME_MORE = 0,       /* call again when more bytes have arrived */

    /* These bytes can never become a message. If their end is known, *message_length is the number of bytes to drop,
     * some of which may not have arrived yet. Otherwise it is 0 and the stream is lost. */
    SIP_FRAME_NULL_ARGUMENT = -1, /* data or message_length is null */
    SIP_FRAME_LONG_HEADERS = -2,  /* no empty line within SIP_LONGEST_MESSAGE bytes */
    SIP_FRAME_LONG_MESSAGE = -3,  /* header section and body are longer than SIP_LONGEST_MESSAGE; the end is known */
    SIP_FRAME_NO_LENGTH = -4,     /* no Content-Length, which a stream requires */
    SIP_FRAME_BAD_LENGTH = -5,    /* not a number from 0 to 2147483647, or a CR in its line */
    SIP_FRAME_DIFFERENT_LENGTHS = -6,
    SIP_FRAME_NUL = -7 /* a NUL, where the decoder would stop; if it is in the body, the end is known */
} SIP_FRAME_OUTCOME;

/* Looks for a message at the start of the length bytes at data. Returns a SIP_FRAME_OUTCOME. *message_length is set
 * on every outcome, to 0 unless the outcome says otherwise. */
int SIP_Frame_Stream(const char *data, size_t length, size_t *message_length);

/* ------------------------------------------------------------------------------------------------------------------
 * Reading what the record leaves out
 *
 * These functions find parts of a received text by the rules of the decoder: a NUL or SIP_LONGEST_MESSAGE bytes end the
 * text, lines end and continue as in SIP_Decode_Buffer, and 62 header lines count. Nothing is copied or changed.
 *
 *   SIP_HEADER_WALK walk = {0};
 *   while (SIP_Walk_Headers(data, length, &walk) == 1)
 *       printf("%.*s\n", (int)walk.value.length, data + walk.value.at);
 */

/* Part of a text. */
typedef struct SIP_SLICE {
    size_t at;     /* offset in data, in bytes */
    size_t length; /* bytes */
} SIP_SLICE;

/* Private: the bytes of a block that may end a line. */
typedef struct SIP_PLACES {
    size_t block;
    uint64_t mask;
} SIP_PLACES;

/* Route: <sip:192.0.2.1;lr>
 * |      |
 * name   value
 *
 * The name ends at the first colon. The value begins after it and the blanks that follow. It keeps trailing blanks and
 * the line ends of lines that are joined. A line without a colon has an empty name and is its value. The line itself
 * begins at name.at, even if the name is empty. */
typedef struct SIP_HEADER_WALK {
    SIP_SLICE name;
    SIP_SLICE value;
    int line;    /* number of this header line, counted from 1 */
    size_t next; /* private: where the walk goes on */
    SIP_PLACES places;
} SIP_HEADER_WALK;

/* Steps to the next header line of the length bytes at data. The first step needs a walk of zeros, every other one the
 * same data and the walk as the step before left it.
 *
 * Returns 1 for a line, 0 at the end of the header section, SIP_DECODE_NULL_ARGUMENT if data or walk is null.
 */
int SIP_Walk_Headers(const char *data, size_t length, SIP_HEADER_WALK *walk);

typedef enum SIP_NAME_FORMS SIPCODE_ENUM_INT {
    SIP_NAME_FULL = 0,    /* only the name itself */
    SIP_NAME_ANY_FORM = 1 /* its compact form too: "m" for "Contact" (RFC 3261 section 7.3.3 and later ones) */
} SIP_NAME_FORMS;

/* Whether the header line of a walk has this name, a full one, in any letter case. The record takes the first line with
 * the full name of a header, and one with the compact form only if there is none.
 *
 * Returns 1 if it has, 0 if not, SIP_DECODE_NULL_ARGUMENT if an argument is null.
 */
int SIP_Is_Header(const char *data, const SIP_HEADER_WALK *walk, const char *name, SIP_NAME_FORMS forms);

/* Finds the value of a header line by its name: number 0 is the first such line, 1 the next one.
 *
 * Returns 1 and sets value, or 0 and an empty value if there are fewer lines. Returns SIP_DECODE_NULL_ARGUMENT if an
 * argument is null.
 */
int SIP_Find_Header(const char *data, size_t length, const char *name, SIP_NAME_FORMS forms, int number,
                    SIP_SLICE *value);

typedef struct SIP_LIST_WALK {
    SIP_SLICE item;         /* without blanks around it; never empty */
    SIP_HEADER_WALK header; /* the line that holds it */
    SIP_SLICE rest;         /* private: the items of this line that follow */
} SIP_LIST_WALK;

/* Steps to the next item of a list header (RFC 3261 section 7.3.1), over all lines with this name. A comma separates
 * items, except between double quotes or angle brackets. The walk begins and goes on as that of SIP_Walk_Headers, with
 * the same name and forms.
 *
 * Returns 1 for an item, 0 after the last one, SIP_DECODE_NULL_ARGUMENT if an argument is null.
 */
int SIP_Walk_List(const char *data, size_t length, const char *name, SIP_NAME_FORMS forms, SIP_LIST_WALK *walk);

/* INVITE sip:1001@192.0.2.1 SIP/2.0     SIP/2.0 301 Moved Permanently
 * |      |                                      |   |
 * method uri                                    |   reason
 *                                               status */
typedef struct SIP_START_LINE {
    int status;       /* of a response: 0 to 999, 0 if it does not begin with three digits; 0 for a request */
    SIP_SLICE reason; /* of a response; may be empty */
    SIP_SLICE method; /* of a request: any word, known or not */
    SIP_SLICE uri;    /* of a request */
} SIP_START_LINE;

/* Reads the start line of the length bytes at data. A text is a request if method is not empty.
 *
 * Returns SIP_DECODE_DONE, or the outcome from SIP_DECODE_NULL_ARGUMENT to SIP_DECODE_BAD_PROTOCOL with which
 * SIP_Decode_Buffer refuses such a line. Then start is empty, unless it is null.
 */
int SIP_Read_Start_Line(const char *data, size_t length, SIP_START_LINE *start);

/* Finds the body: what follows the empty line, whatever Content-Length states.
 *
 * Returns 1 if there is one, 0 and an empty slice if not, SIP_DECODE_NULL_ARGUMENT if an argument is null.
 */
int SIP_Find_Body(const char *data, size_t length, SIP_SLICE *body);

/* ------------------------------------------------------------------------------------------------------------------
 * Encoding
 */

typedef enum SIP_ENCODE_ERROR SIPCODE_ENUM_INT {
    SIP_ENCODE_NULL_ARGUMENT = -1, /* buffer or record is null */
    SIP_ENCODE_BAD_METHOD = -2,    /* method is outside 1 to 48; nothing is printed */
    SIP_ENCODE_NO_ROOM = -3,       /* message and terminator are longer than size */
    SIP_ENCODE_NO_BODY = -4,       /* content.use is 1 and there is no body source, or the XML document is null */
    SIP_ENCODE_BROKEN_TEXT = -5    /* a text that would break the message apart, see below */
} SIP_ENCODE_ERROR;

/* Write into the size bytes at buffer what SIP_Encode_Message_Reuqest and SIP_Encode_Message_Response write.
 *
 * A record is refused if a text to be written would break the message apart:
 *  - a CR or LF in any member except a body or a section of a session description
 *  - a double quote or a backslash between double quotes
 *  - "<", ">" or a double quote between angle brackets
 *  - a blank in the request line
 *  - a comma as the last character of a line: the decoder would join the next line to it
 *  - a DTMF key (info.key) that is not one character long: Content-Length would be wrong
 *  - an XML document whose length differs from what Xml_Encode takes off *room: Content-Length would be wrong
 *
 * Returns the length of the text without its terminator, or a negative SIP_ENCODE_ERROR. After an error buffer holds
 * an empty text (unless it is null or size is 0) and the record is as it was.
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
