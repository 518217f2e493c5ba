/* decode.h - decodes received SIP text into the codec record.
 *
 * Threads: nothing here keeps state between calls. Any number of threads may call at once if each has its own record
 * and split message and the host's services (host.h) allow it. Nothing is allocated.
 *
 * A blank is any byte from 1 to 32.
 */
#ifndef SIPCODE_DECODE_H
#define SIPCODE_DECODE_H

#include <stddef.h>

#include "code.h"

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

/* ------------------------------------------------------------------------------------------------------------------
 * The split message
 *
 *   INVITE sip:1001@10.0.0.1 SIP/2.0     header[0]: rlPart1 "INVITE", rlPart2 "sip:1001@10.0.0.1"
 *   Via: SIP/2.0/UDP 10.0.0.9            header[1]
 *   Record-Route: <sip:10.0.0.2>,        header[2]: a line that ends in a comma and CR LF continues on the next
 *     <sip:10.0.0.3>
 *                                        the empty line ends the headers
 *   v=0                                  line[0], and the whole body as received in content
 *
 * The entries point into the message's own data, so a split message must not be copied. The host may also fill one
 * itself for the functions below. They read header[0] to header[headers - 1] and line[0] to line[lines - 1] as
 * terminated strings, and content as terminated text. They skip null entries and read at most 64 of each.
 */
typedef struct SIP_MSG {
    char content[4096];     /* the body as received: the text after the empty line */
    char data[4096];        /* the received text, cut into lines in place */
    char *rlPart1;          /* first token of the start line: the method word, or "SIP/2.0" for a response */
    char *rlPart2;          /* request: the request URI; response: status code and reason phrase */
    int len;                /* not used */
    int headers;            /* entries in header, the start line included; at most 64 */
    int lines;              /* entries in line; at most 64 */
    int method;             /* sip_code_method of the message, set after splitting */
    unsigned int flags;     /* not used */
    char *header[64];       /* the start line, then one entry per header line in message order */
    char *line[64];         /* one entry per body line in order */
    unsigned int sdp_start; /* first body line of the session description */
    unsigned int sdp_end;   /* one past the last */
} SIP_MSG;

/* ------------------------------------------------------------------------------------------------------------------
 * Decoding a message
 */

/* Decodes the received text buf into pcode_msg.
 *
 * buf        terminated text; only its first 4095 characters are read. It is not changed. Must not be null.
 * pcode_msg  a record that the caller zeroed. Must not be null.
 *
 * Returns  1 the message was decoded. A missing or broken header leaves its members as they were.
 *         -1 the message is refused: no usable start line, no header line, no Call-ID, no CSeq with a number, or no
 *            Via. Members decoded before the refusal may be filled; xml_buf is not.
 */
int Sip_Decode(char *buf, SIP_CODE_MSG *pcode_msg);

/* ------------------------------------------------------------------------------------------------------------------
 * Recognising methods and statuses (the identifiers are those of sip_code_method)
 */

/* Returns the identifier of the method word at the start of msg. Case is ignored, and a blank or the end of msg must
 * follow the word. Returns 0 if no method matches, -1 if msg is null or empty. */
int SIP_Decode_Parse_Method(const char *msg);

/* Returns the identifier of the status at the start of msg; only its three-digit code is compared. Returns 0 if the
 * code is not in the table or msg is shorter than three characters, -1 if msg is null or empty. */
int SIP_Decode_Parse_Method_Response(const char *msg);

/* Returns a substitute for a status that is not in the table: 27 (480) if msg begins with a code from 400 to 699,
 * else 0. */
int SIP_Decode_Parse_Other_Response(const char *msg);

/* Sets psip_msg->method from the status code at the start of rlPart2 if method is still 0. It knows fewer codes than
 * SIP_Decode_Parse_Method_Response: 401, 403, 422, 503 and 513 leave 0. Does nothing if psip_msg is null. */
void CompatibleSipMethodName(SIP_MSG *psip_msg);

/* ------------------------------------------------------------------------------------------------------------------
 * Showing a record
 */

/* Size of the longest dump, terminator included: 2264 bytes if every text member is terminated, and one more for each
 * of its 26 texts that a host left unterminated. */
#define SIP_DUMP_SIZE 2290

/* Writes the main members of pcode_msg as lines of text to buf, which must hold at least SIP_DUMP_SIZE bytes. The
 * record is not changed. */
void SIP_Decode_Msg_Printf(char *buf, SIP_CODE_MSG *pcode_msg);

/* ------------------------------------------------------------------------------------------------------------------
 * Scanning
 */

/* Returns the value of the first header line named name, without its leading blanks; null if there is none or name is
 * null. Case is ignored, and ":" must follow the name directly. The start line is searched too. A compact form is a
 * different name. The result points into the split message. */
const char *Parse_Header(const SIP_MSG *psip_msg, const char *name);

/* Returns the first non-blank character of str, or its terminator. str must not be null. */
char *Parse_Skip_Blanks(const char *str);

/* Returns 1 if s is null or empty, else 0. */
int Judge_Strlen_Zero(const char *s);

/* Copies src into the size bytes at dst, cut to size - 1 characters and always terminated. Does nothing if dst or src
 * is null or size is 0. */
void Copy_String(char *dst, const char *src, size_t size);

/* Decodes the %xx escapes of s in place (RFC 3261 section 25.1). If a hexadecimal number begins after "%", exactly two
 * characters are consumed. "%00" ends the text. The text never grows. s must not be null. */
void Uri_Decode(char *s);

/* ------------------------------------------------------------------------------------------------------------------
 * Decoders of one header. Each reads the split message and fills the member or record passed to it. A missing header
 * leaves it as it was. No pointer may be null.
 */

/* Returns the number of Via values: 1 for every line that begins with "Via" or "v:", and 1 more if it has a comma. */
int SIP_Decode_Judge_Via_Count(SIP_MSG *psip_msg);

/* First Contact address, from "Contact" or "m": user, addr.ip and addr.port. */
void Parse_Contact(SIP_CONTACT *contact, SIP_MSG *psip_msg);

/* "Session-Expires" or "x" (RFC 4028): use, sessionexpires and, if a parameter has a value, refresher. */
void Parse_Session_Expires(SIP_SESSION_EXPIRES *psessionexpires, SIP_MSG *psip_msg);

/* "Min-SE" (RFC 4028): use and minse. */
void Parse_Min_Se(SIP_MIN_SE *pMinSe, SIP_MSG *psip_msg);

/* "Min-Expires" (RFC 3261 section 20.23): use and min_expires. */
void Parse_Min_Expires(SIP_MIN_EXPIRES *pMinExpires, SIP_MSG *psip_msg);

/* "Call-Info" (RFC 3261 section 20.9) into call_info. Returns 1, or -1 if the header is missing. */
int Parse_Call_Info(SIP_MSG *psip_msg, SIP_CODE_MSG *pcode_msg);

/* Returns the number of lines that begin with "Record-Route", -1 if psip_msg is null. */
int SIP_Decode_Judge_RecordRoute_Count(SIP_MSG *psip_msg);

/* DTMF signal of an INFO into use and key: the "Signal=" line of an application/dtmf-relay body, or the whole
 * application/dtmf body. Trailing blanks of the latter are removed from content in place. */
void Parse_Info(SIP_INFO *info, SIP_MSG *psip_msg);

/* Message-waiting summary (RFC 3842) of the body text pchMesseagSummary. Does nothing if it is null or empty. */
void Parse_Message_Summary(MESSAGE_SUMMARY *ptMsgSummary, char *pchMesseagSummary);

/* ------------------------------------------------------------------------------------------------------------------
 * Digest authentication (RFC 2617). Values are cut to their members. Unlisted parameters are skipped.
 */

/* Credentials: "Authorization" (author_type 100), else "Proxy-Authorization" (101). First clears username, realm,
 * nonce, uri, response and algorithm and sets stale to -1, even if there is no header. */
void Parse_Author(SIP_AUTHOR *pauthor, SIP_MSG *psip_msg);

/* Challenge: "WWW-Authenticate" (authen_type 102), else "Proxy-Authenticate" (103). */
void Parse_Authen(SIP_AUTHEN *pauthen, SIP_MSG *psip_msg);

/* "Authentication-Info": use is 1 if it has a value, else 0; nonce is its nextnonce parameter. */
void Parse_Authen_Info(NEXT_NONCE *next_nonce, SIP_MSG *psip_msg);

/* Copies src to dst without double quotes, up to the second one, and terminates dst. Returns the offset of the first
 * comma in dst, or the length of dst if it has no comma. If src has fewer than two double quotes, all of it is copied,
 * 0 is returned, and dst is not terminated: clear it before the call. dst must be as large as src with its
 * terminator. */
int Del_Quote_Mark(char *src, char *dst);

/* Older challenge decoders, kept for hosts that call them. They do nothing unless the host's Str_Cmp finds the header's
 * value equal to "Digest ". buf is the whole message text, of which 4095 characters are used. realm and nonce are the
 * texts between fixed neighbours; algorithm becomes "MD5" and qop "auth". use and authen_type are not set. */
void Parse_Authen_bak(SIP_AUTHEN *pauthen, SIP_MSG *psip_msg, char *buf);  /* WWW-Authenticate; stale is read */
void Parse_Authen_bak2(SIP_AUTHEN *pauthen, SIP_MSG *psip_msg, char *buf); /* Proxy-Authenticate; stale becomes 0 */
void Parse_Authen_bak3(SIP_AUTHEN *pauthen, SIP_MSG *psip_msg, char *buf); /* Proxy-Authenticate; stale is read */

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif

#ifdef __cplusplus
}
#endif

#endif
