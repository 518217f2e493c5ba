/* decode.h - received SIP text into the codec record.
 *
 * Threads: nothing here keeps state between calls. Any number of threads may call at once, each on a record and a split
 * message of its own, provided that the host's services (host.h) allow it. Nothing is allocated.
 *
 * Blank, throughout: any byte from 1 to 32.
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
 *   Record-Route: <sip:10.0.0.2>,        header[2]: a line that ends in a comma and CR LF goes on in the next one
 *     <sip:10.0.0.3>
 *                                        the empty line ends the headers
 *   v=0                                  line[0], and the whole body as received in content
 *
 * The entries point into the message's own data, so a split message must not be copied. The functions below take one
 * that the host filled as well: they read header[0] to header[headers - 1] and line[0] to line[lines - 1] as terminated
 * strings (a null entry is passed over, and at most 64 are read) and content as a terminated text.
 */
typedef struct SIP_MSG {
    char content[4096];     /* the body as received: the text behind the empty line */
    char data[4096];        /* the received text, cut into lines in place */
    char *rlPart1;          /* first token of the start line: the method word, or "SIP/2.0" for a response */
    char *rlPart2;          /* request: the request URI; response: status code and reason phrase */
    int len;                /* not used */
    int headers;            /* entries in header, the start line included; at most 64 */
    int lines;              /* entries in line; at most 64 */
    int method;             /* sip_code_method of the message, set behind the splitting */
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
 * buf        terminated text, never changed; its first 4095 characters are used. Must not be null.
 * pcode_msg  a record that the caller zeroed. Must not be null.
 *
 * Returns  1 the message was decoded; headers that are missing or broken left their members as they were.
 *         -1 the message is refused: no usable start line, no header line, no Call-ID, no CSeq with a number, or no
 *            Via. Members decoded before the refusal may be filled; xml_buf is not.
 */
int Sip_Decode(char *buf, SIP_CODE_MSG *pcode_msg);

/* ------------------------------------------------------------------------------------------------------------------
 * Recognising methods and statuses (the identifiers are those of sip_code_method)
 */

/* Identifier of the method word that begins msg: the word in any letter case, followed by a blank or the end.
 * 0 when no method matches, -1 for a null or empty msg. */
int SIP_Decode_Parse_Method(const char *msg);

/* Identifier of the status text that begins msg, by its three-digit code alone. 0 when the code is not in the table or
 * msg is shorter than three characters, -1 for a null or empty msg. */
int SIP_Decode_Parse_Method_Response(const char *msg);

/* Stand-in for a status that the table does not hold: 27 (480) when msg begins with a code from 400 to 699, else 0. */
int SIP_Decode_Parse_Other_Response(const char *msg);

/* Sets psip_msg->method from the status code that begins rlPart2, when method is still 0; knows fewer codes than
 * SIP_Decode_Parse_Method_Response: 401, 403, 422, 503 and 513 leave it 0. Does nothing for a null message. */
void CompatibleSipMethodName(SIP_MSG *psip_msg);

/* ------------------------------------------------------------------------------------------------------------------
 * Showing a record
 */

/* Room for the longest dump, terminator included: 2264 bytes when every text member is terminated, and one more for
 * each of its 26 texts that a host left unterminated. */
#define SIP_DUMP_SIZE 2290

/* Writes the main members of pcode_msg as lines of text to buf, which holds at least SIP_DUMP_SIZE bytes. The record is
 * only read. */
void SIP_Decode_Msg_Printf(char *buf, SIP_CODE_MSG *pcode_msg);

/* ------------------------------------------------------------------------------------------------------------------
 * Scanning
 */

/* Value of the first header line named name (any letter case, followed at once by ":"), behind its leading blanks; null
 * when there is none or name is null. The start line is searched too; compact forms are names of their own. The result
 * points into the split message. */
const char *Parse_Header(const SIP_MSG *psip_msg, const char *name);

/* First non-blank character of str, or its terminator. str must not be null. */
char *Parse_Skip_Blanks(const char *str);

/* 1 when s is null or empty, else 0. */
int Judge_Strlen_Zero(const char *s);

/* Copies src into the size bytes at dst, cut to size - 1 characters and always terminated. Does nothing when dst or src
 * is null or size is 0. */
void Copy_String(char *dst, const char *src, size_t size);

/* Decodes the %xx escapes of s in place (RFC 3261 section 25.1). Exactly the two characters behind a "%" are taken when
 * a hexadecimal number begins there; "%00" ends the text. The text never grows. s must not be null. */
void Uri_Decode(char *s);

/* ------------------------------------------------------------------------------------------------------------------
 * Decoders of one header. Each reads the split message and fills the member (or record) that it is given; a missing
 * header leaves it as it was. No pointer may be null.
 */

/* Number of Via values: 1 for every line that begins with "Via" or "v:", and 1 more when it holds a comma. */
int SIP_Decode_Judge_Via_Count(SIP_MSG *psip_msg);

/* First Contact address, from "Contact" or "m": user, addr.ip and addr.port. */
void Parse_Contact(SIP_CONTACT *contact, SIP_MSG *psip_msg);

/* "Session-Expires" or "x" (RFC 4028): use, sessionexpires and, when a parameter has one, refresher. */
void Parse_Session_Expires(SIP_SESSION_EXPIRES *psessionexpires, SIP_MSG *psip_msg);

/* "Min-SE" (RFC 4028): use and minse. */
void Parse_Min_Se(SIP_MIN_SE *pMinSe, SIP_MSG *psip_msg);

/* "Min-Expires" (RFC 3261 section 20.23): use and min_expires. */
void Parse_Min_Expires(SIP_MIN_EXPIRES *pMinExpires, SIP_MSG *psip_msg);

/* "Call-Info" (RFC 3261 section 20.9) into call_info. Returns 1, or -1 without the header. */
int Parse_Call_Info(SIP_MSG *psip_msg, SIP_CODE_MSG *pcode_msg);

/* Number of lines that begin with "Record-Route"; -1 when psip_msg is null. */
int SIP_Decode_Judge_RecordRoute_Count(SIP_MSG *psip_msg);

/* DTMF signal of an INFO into use and key: the body line "Signal=" of an application/dtmf-relay body, or an
 * application/dtmf body, whose trailing blanks are then taken off content in place. */
void Parse_Info(SIP_INFO *info, SIP_MSG *psip_msg);

/* Message-waiting summary (RFC 3842) of the body text pchMesseagSummary; a null or empty text does nothing. */
void Parse_Message_Summary(MESSAGE_SUMMARY *ptMsgSummary, char *pchMesseagSummary);

/* ------------------------------------------------------------------------------------------------------------------
 * Digest authentication (RFC 2617). Values are cut to their members; parameters that are not listed are skipped.
 */

/* Credentials: "Authorization" (author_type 100), else "Proxy-Authorization" (101). Clears username, realm, nonce, uri,
 * response and algorithm and sets stale to -1 first, also when there is no header. */
void Parse_Author(SIP_AUTHOR *pauthor, SIP_MSG *psip_msg);

/* Challenge: "WWW-Authenticate" (authen_type 102), else "Proxy-Authenticate" (103). */
void Parse_Authen(SIP_AUTHEN *pauthen, SIP_MSG *psip_msg);

/* "Authentication-Info": use is 1 when it has a value, else 0; nonce is its nextnonce parameter. */
void Parse_Authen_Info(NEXT_NONCE *next_nonce, SIP_MSG *psip_msg);

/* Copies src to dst without double quotes, up to the second one. Returns the offset of the first comma in dst, or the
 * length of dst when it holds none, and dst is terminated. With fewer than two double quotes all of src is copied,
 * the result is 0, and dst is not terminated: clear it before the call. dst holds as many bytes as src with its
 * terminator. */
int Del_Quote_Mark(char *src, char *dst);

/* Older challenge decoders, kept for hosts that call them. Each works on buf, the whole message text, of which 4095
 * characters are used, when the host's Str_Cmp finds the header's value equal to "Digest ": realm and nonce are the
 * texts between fixed neighbours, algorithm becomes "MD5" and qop "auth". None sets use or authen_type. */
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
