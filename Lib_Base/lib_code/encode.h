/* encode.h - encodes the codec record as SIP text, and builds the values that a new message needs.
 *
 * Threads: the two encoders, Build_Date and BuildDefaultSdp may run at once on different records and buffers.
 * Build_Tag, Build_Via_Branch and Bulid_Call_id share two counters and the C library's random generator, which
 * Build_Via_Branch and Bulid_Call_id reseed: call them from one thread at a time. A host that changes TZ must call
 * tzset() before it builds the next branch.
 */
#ifndef SIPCODE_ENCODE_H
#define SIPCODE_ENCODE_H

#include "code.h"

/* Size in bytes, terminator included, that each buffer must have. Nothing is written beyond it, whatever the record
 * holds: it is the size of the longest message, in which every text member is full and unterminated and every number
 * has its longest form. */
#define SIP_REQUEST_SIZE 9166
#define SIP_RESPONSE_SIZE 6609
#define SIP_SDP_SIZE 3167   /* the session description inside a message */
#define SIP_TAG_SIZE 15     /* 8 digits are written */
#define SIP_BRANCH_SIZE 48  /* "z9hG4bK" and at most 40 characters */
#define SIP_CALL_ID_SIZE 99 /* 32 digits, "@" and the host, cut to 98 characters */
#define SIP_DATE_SIZE 63    /* 29 characters are written */

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#pragma GCC visibility push(default)
#define SIPCODE_FORMAT(text, values) __attribute__((format(printf, text, values)))
#else
#define SIPCODE_FORMAT(text, values)
#endif

/* ------------------------------------------------------------------------------------------------------------------
 * Encoding a message
 */

/* Writes one complete request: the request line from method and uri, the header lines whose members are present, and
 * the body. method is 2 to 15.
 *
 * buf         at least SIP_REQUEST_SIZE bytes; receives one terminated text.
 * encode_msg  the filled record. A leading "ims-" is removed from callid. A TE101 codec in sdp.a_coders may get an
 *             entry in sdp.rtpmap. Both changes are kept. The host's Xml_Encode reads xml.xml.
 *
 * Text is written as it is: a line end or a quote inside a member breaks the message. An identifier in cseq.method or
 * rack.method that is not in the table is written as "-UNKNOWN-". If content.use is 1 but there is no body source, or
 * the XML document is null, "Content-Length: 0" is written.
 *
 * Returns  1 the request was written.
 *         -1 method is outside 1 to 48: standard output says so, buf is untouched, "ims-" has been removed.
 */
int SIP_Encode_Message_Reuqest(char *buf, SIP_CODE_MSG *encode_msg);

/* Writes one complete response: the status line from method, then as above. method is 16 to 48. The record is usually
 * the one that Sip_Decode filled from the request; the caller first clears what must not be echoed.
 *
 * buf         at least SIP_RESPONSE_SIZE bytes.
 * encode_msg  changed as above. Also, to.tag_use becomes 0 if to.tag is empty, and via1.addr.port becomes 5060 if it is
 *             0 and via_count is 2.
 *
 * Returns as above.
 */
int SIP_Encode_Message_Response(char *buf, SIP_CODE_MSG *encode_msg);

/* ------------------------------------------------------------------------------------------------------------------
 * Building values
 */

/* A tag (RFC 3261 section 19.3): eight hexadecimal digits, into SIP_TAG_SIZE bytes. Does not seed. */
void Build_Tag(char *buf);

/* A Via branch (RFC 3261 section 8.1.1.7), into SIP_BRANCH_SIZE bytes: "z9hG4bK", a random number, the branch
 * counter three times, and the local time in fourteen digits. */
void Build_Via_Branch(char *str);

/* A Call-ID (RFC 3261 section 8.1.1.4), into SIP_CALL_ID_SIZE bytes: 32 hexadecimal digits, "@" and the text ip. */
void Bulid_Call_id(char *callid, char *ip);

/* The current time as a Date value (RFC 3261 section 20.17), into SIP_DATE_SIZE bytes. */
void Build_Date(char *pchDate);

/* Assigns payload 101 to the telephone-event codec TE101 if a_coders contains it: in its rtpmap entry if that has no
 * payload, or in a new entry. Does nothing if all four entries are in use. */
void BuildDefaultSdp(SIP_SDP *sdp);

/* Appends formatted text (as vsprintf) and its terminator at *buf, then moves *buf to the terminator, so that calls
 * can follow one another. If formatting fails, *buf does not move. There is no bound: the caller guarantees room. */
void MSG_Sprintf(char **buf, const char *fmt, ...) SIPCODE_FORMAT(2, 3);

#undef SIPCODE_FORMAT

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif

#ifdef __cplusplus
}
#endif

#endif
