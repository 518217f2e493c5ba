/* code.h - the codec record, the identifiers and their tables.
 *
 * SIP_CODE_MSG is the one structure that crosses the library's boundary: Sip_Decode (decode.h) fills it from a received
 * SIP message (RFC 3261), the encoders (encode.h) write a SIP message from it.
 *
 * Rules of every record here
 *  - Plain values in declared order, no pointer but SIP_XML.xml. The caller owns the record, and nothing in it is
 *    allocated.
 *  - A text member char[N] holds at most N-1 characters and is always terminated. Decoders cut longer values silently;
 *    where a member keeps fewer than N-1 characters, its comment says so.
 *  - int and the enumerations are 32 bits wide and signed; long int is the platform's.
 *  - A record that begins with "int use" is valid only if use is 1. Decoders set it to 1 if they find the header.
 *    Encoders write the header or body if it is 1.
 *  - Sip_Decode clears nothing: it writes only what the message carries. Zero the record before a decode, and before
 *    filling one for an encode.
 *
 * Marks: D the decoder writes it, E the encoders read it, P the record dump prints it.
 *
 * The layout is the binary interface: sizes and order change only together with the library's SOVERSION.
 */
#ifndef SIPCODE_CODE_H
#define SIPCODE_CODE_H

#include "xml.h"

/* Version of these headers. A library of another major version has another record and another SOVERSION. */
#define SIPCODE_VERSION_MAJOR 1
#define SIPCODE_VERSION_MINOR 0
#define SIPCODE_VERSION_PATCH 0
#define SIPCODE_VERSION "1.0.0"

#ifdef __cplusplus
extern "C" {
/* In C++ an enumeration without a fixed type has no valid value beyond its enumerators. Untrusted records hold some. */
#define SIPCODE_ENUM_INT : int
#else
#define SIPCODE_ENUM_INT
#endif

#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

/* ------------------------------------------------------------------------------------------------------------------
 * Identifiers. Several spellings below are part of the interface.
 */

/* Transport of a message to encode. E_SCTP, like any other value, is written as an empty transport token. */
typedef enum TRANS_TYPE_E SIPCODE_ENUM_INT { E_UDP = 0, E_TCP = 1, E_TLS = 2, E_SCTP = 3 } TRANS_TYPE_E;

/* Audio codecs of a session description; UNKONW marks an empty slot. */
typedef enum e_codec SIPCODE_ENUM_INT {
    UNKONW = 0,
    G711_A = 1, /* static payload 8 */
    G711_U = 2, /* static payload 0 */
    G729 = 3,   /* static payload 18 */
    G723 = 4,   /* static payload 4 */
    TE101 = 5,  /* telephone events (RFC 4733), dynamic payload */
    GSM = 6,    /* static payload 3 */
    G726 = 7,   /* static payload 2 */
    G722 = 8,   /* static payload 9 */
    SPEEX = 9,  /* dynamic payload */
    ILBC = 10,  /* dynamic payload */
    DVI4 = 11   /* static payloads 5 and 6 */
} e_codec;

/* Option tags of a Supported header. SUP_100_REL is never produced by the decoder: "100rel" reads as SUP_UNKOWN. */
typedef enum SIP_SUPPORTED_TYPE SIPCODE_ENUM_INT {
    SUP_UNKOWN = 0,
    SUP_100_REL = 1,
    SUP_TIMER = 2,      /* "timer" */
    SUP_REPLACES = 3,   /* "replaces" */
    SUP_EARLY_MEDIA = 4 /* "P_Early_Media" */
} SIP_SUPPORTED_TYPE;

/* Request methods (0 to 15) and response kinds (16 to 48); the texts are in decode_methods. */
typedef enum sip_code_method SIPCODE_ENUM_INT {
    SIP_REQUEST_MSG_UNKNOWN = 0,
    SIP_REQUEST_MSG_RESPONSE = 1, /* the start-line token of any response */
    SIP_REQUEST_MSG_REGISTER = 2,
    SIP_REQUEST_MSG_OPTION = 3,
    SIP_REQUEST_MSG_NOTIFY = 4,
    SIP_REQUEST_MSG_INVITE = 5,
    SIP_REQUEST_MSG_ACK = 6,
    SIP_REQUEST_MSG_PRACK = 7,
    SIP_REQUEST_MSG_BYE = 8,
    SIP_REQUEST_MSG_REFER = 9,
    SIP_REQUEST_MSG_SUBCRIBE = 10,
    SIP_REQUEST_MSG_MESSAGE = 11,
    SIP_REQUEST_MSG_UPDATE = 12,
    SIP_REQUEST_MSG_INFO = 13,
    SIP_REQUEST_MSG_CANCEL = 14,
    SIP_REQUEST_MSG_PUBLISH = 15,
    SIP_RESPONSE_MSG_100_TRY = 16,
    SIP_RESPONSE_MSG_180_RING = 17,
    SIP_RESPONSE_MSG_183_RING = 18,
    SIP_RESPONSE_MSG_182_RING = 19,
    SIP_RESPONSE_MSG_200_OK = 20,
    SIP_RESPONSE_MSG_202_OK = 21,
    SIP_RESPONSE_MSG_401_UNAUTHORIZED = 22,
    SIP_RESPONSE_MSG_403_FORBIDDEN = 23,
    SIP_RESPONSE_MSG_404_NOT_FONUD = 24,
    SIP_RESPONSE_MSG_407_PROXY_AUTHENTICATION_REQUIRED = 25,
    SIP_RESPONSE_MSG_408_REQUEST_TIMEROUT = 26,
    SIP_RESPONSE_MSG_480_TEMPORARILY_UNAVAILABLE = 27,
    SIP_RESPONSE_MSG_481_CALL_TRANSACTION_DOES_NOT_EXIST = 28,
    SIP_RESPONSE_MSG_483_TOO_MANY_HOPS = 29,
    SIP_RESPONSE_MSG_486_BUSY_HERE = 30,
    SIP_RESPONSE_MSG_487_REQUEST_TERMINATED = 31,
    SIP_RESPONSE_MSG_488_NOT_ACCEPTABLE_HERE = 32,
    SIP_RESPONSE_MSG_491_REQUEST_PENDING = 33,
    SIP_RESPONSE_MSG_493_UNDECIPHERABLE = 34,
    SIP_RESPONSE_MSG_500_SERVER_INTERNAL_ERROR = 35,
    SIP_RESPONSE_MSG_501_NOT_IMPLEMENTED = 36,
    SIP_RESPONSE_MSG_504_SERVER_TIME_OUT = 37,
    SIP_RESPONSE_MSG_505_VERSION_NOT_SUPPORTED = 38,
    SIP_RESPONSE_MSG_513_MESSAGE_TOO_LARGE = 39,
    SIP_RESPONSE_MSG_600_BUSY_EVERYWHERE = 40,
    SIP_RESPONSE_MSG_603_DECLINE = 41,
    SIP_RESPONSE_MSG_604_DOES_NOT_NOT_EXIST_ANYWHERE = 42,
    SIP_RESPONSE_MSG_181 = 43,
    SIP_RESPONSE_MSG_400_BAD_REQUEST = 44,
    SIP_RESPONSE_MSG_503 = 45,
    SIP_RESPONSE_MSG_423_INTERVAL_TOO_BRIEF = 46,
    SIP_RESPONSE_MSG_422_SESSION_INVERVAL_TOO_SMALL = 47,
    SIP_RESPONSE_MSG_405_METHOD_NOT_ALLOWED = 48
} sip_code_method;

/* Directions of a stream (RFC 4566 section 6), in SIP_SDP.a_media and v_media. */
typedef enum SIP_MEDIA_DIRECTION SIPCODE_ENUM_INT {
    SIP_MEDIA_SENDRECV = 0, /* written for any other value too */
    SIP_MEDIA_SENDONLY = 1,
    SIP_MEDIA_RECVONLY = 2,
    SIP_MEDIA_INACTIVE = 3
} SIP_MEDIA_DIRECTION;

/* Headers of digest authentication, in SIP_AUTHOR.author_type and SIP_AUTHEN.authen_type. */
typedef enum SIP_DIGEST_HEADER SIPCODE_ENUM_INT {
    SIP_DIGEST_AUTHORIZATION = 100,
    SIP_DIGEST_PROXY_AUTHORIZATION = 101,
    SIP_DIGEST_WWW_AUTHENTICATE = 102,
    SIP_DIGEST_PROXY_AUTHENTICATE = 103
} SIP_DIGEST_HEADER;

/* Kinds of URI, in SIP_FROMTO.flag. */
typedef enum SIP_URI_KIND SIPCODE_ENUM_INT {
    SIP_URI_NONE = 0,
    SIP_URI_SIP = 1,  /* "sip:" */
    SIP_URI_OTHER = 2 /* "tel:" or any other scheme */
} SIP_URI_KIND;

/* Body sources, in SIP_XML.use. */
typedef enum SIP_XML_USE SIPCODE_ENUM_INT {
    SIP_XML_NONE = 0,
    SIP_XML_DOCUMENT = 1, /* SIP_XML.xml, rendered by the host's Xml_Encode */
    SIP_XML_TEXT = 2      /* SIP_CODE_MSG.xml_buf; requests only */
} SIP_XML_USE;

/* Number of identifiers, and so of the rows of decode_methods. */
#define SIP_CODE_METHOD_COUNT 49

/* Number of codecs, and so of the rows of code_methods. */
#define SIP_CODE_CODEC_COUNT 12

/* Text on the wire of every identifier: the method word of a request, or status code and reason phrase of a response.
 * Row i has id i. */
typedef struct SIP_METHOD_TEXT {
    sip_code_method id;
    const char *text;
} SIP_METHOD_TEXT;
extern const SIP_METHOD_TEXT decode_methods[SIP_CODE_METHOD_COUNT];

/* Display name of every codec, indexed by e_codec. Only the record dump reads it; it shows G722 as "97". */
typedef struct SIP_CODEC_TEXT {
    const char *text;
} SIP_CODEC_TEXT;
extern const SIP_CODEC_TEXT code_methods[SIP_CODE_CODEC_COUNT];

/* ------------------------------------------------------------------------------------------------------------------
 * Addresses
 */

typedef struct IPV4_ADDRESS {
    char ip[24]; /* host as text, dotted IPv4 address or name, longest 23 */
    int port;    /* 5060 where a SIP URI or a single Via names none; a port that is not a number reads as 0 */
} IPV4_ADDRESS;

/* Host name that the encoders write instead of ip:port. */
typedef struct DNS_ADDR {
    int use;          /* 1: dnsname is the host part and no port is written; E */
    char dnsname[32]; /* E */
} DNS_ADDR;

/* Request URI (RFC 3261 section 19.1)
 *
 *   sip:1001@10.0.0.1:5070;transport=udp
 *       |    |        |
 *       user addr.ip  addr.port            parameters are dropped
 */
typedef struct SIP_URI {
    char user[32];     /* percent-decoded; D E P */
    IPV4_ADDRESS addr; /* D E P */
    DNS_ADDR dns;      /* host name of the request line; E */
} SIP_URI;

/* One Via value (RFC 3261 section 20.42)
 *
 *   Via: SIP/2.0/UDP 10.0.0.1:5070;rport;branch=z9hG4bK776asdhds
 *                    |        |                 |
 *                    addr.ip  addr.port         branch, prefix included
 *
 * The transport word is checked (UDP, TCP, SCTP, TLS) and not stored; received and rport parameters are not read.
 */
typedef struct SIP_VIA {
    char branch[128];  /* D E P */
    int rport;         /* 1: the request encoder appends ";rport"; E */
    IPV4_ADDRESS addr; /* sent-by; D E P */
} SIP_VIA;

/* First Contact address (RFC 3261 section 20.10). Written only if user and addr.ip are not empty and the port is
 * above 0. */
typedef struct SIP_CONTACT {
    char user[32];     /* D E P */
    IPV4_ADDRESS addr; /* D E P */
} SIP_CONTACT;

/* From, To, P-Called-Party-ID (RFC 3261 sections 20.20 and 20.39, RFC 7315 section 4.2)
 *
 *   From: "Desk" <sip:1001@10.0.0.1:5070;user=phone>;tag=a6c85cf
 *                     |    |        |                    |
 *                     user addr.ip  addr.port            tag
 *
 * The display name is not kept; the encoders write user as the display name too.
 */
typedef struct SIP_FROMTO {
    int tag_use;       /* 1: the To line carries ";tag="; the From line always does; E */
    char user[32];     /* percent-decoded; D E P */
    char tag[128];     /* D (From and To only) E P */
    IPV4_ADDRESS addr; /* D E P */
    DNS_ADDR dns;      /* E */
    int flag;          /* SIP_URI_KIND of the To URI; D (To only) */
} SIP_FROMTO;

/* "Request URI:" line (the blank is part of that name) and P-Asserted-Identity (RFC 3325), requests only. */
typedef struct SIP_REQUST_URI {
    int tag_use;       /* 1: the line is written; E */
    char user[32];     /* user part and display name; E */
    char tag[128];     /* ";tag=" if not empty; E */
    IPV4_ADDRESS addr; /* E */
} SIP_REQUST_URI;

typedef struct SIP_P_ASSERTED_IDENTITY {
    int tag_use;       /* 1: the line is written; E */
    char user[32];     /* user part and display name; E */
    char tag[128];     /* ";tag=" if not empty; E */
    IPV4_ADDRESS addr; /* E */
} SIP_P_ASSERTED_IDENTITY;

/* ------------------------------------------------------------------------------------------------------------------
 * Single-value headers. "Verbatim" is the value from its first non-blank to the end of the line, parameters included.
 */

/* CSeq (RFC 3261 section 20.16) */
typedef struct SIP_CSEQ {
    int seq;    /* D E P */
    int method; /* sip_code_method; 0 if the word is unknown, -1 if there is none; D E P */
} SIP_CSEQ;

/* Expires (RFC 3261 section 20.19) */
typedef struct SIP_EXPIRE {
    int use;     /* decode: 1 if and only if expires is not 0; D E */
    int expires; /* seconds, from Expires, else from Contact's ";expires=", else 3600; D E P */
} SIP_EXPIRE;

/* Content-Type or "c" (RFC 3261 section 20.15) */
typedef struct SIP_CONTENT_TYPE {
    int use;       /* encode: 1 writes a body, 0 gives "Content-Length: 0"; decode: 0 if there is none; D E P */
    char type[64]; /* verbatim; D E P */
} SIP_CONTENT_TYPE;

/* Alert-Info (RFC 3261 section 20.4), read from an INVITE only */
typedef struct SIP_ALERT {
    int use;             /* D E */
    char alertinfo[128]; /* verbatim, longest 126; D E */
} SIP_ALERT;

/* Require (RFC 3261 section 20.32) */
typedef struct SIP_REQUIRE {
    int use;          /* decode: 0 if there is none; D E */
    char REQUIRE[64]; /* verbatim, longest 62; D E */
} SIP_REQUIRE;

/* RSeq (RFC 3262 section 7.1) */
typedef struct SIP_RSEQ {
    int use;  /* decode: 0 if there is none; D E */
    int RSeq; /* decode: -1 if there is none; D E */
} SIP_RSEQ;

/* Event (RFC 6665 section 8.2.1) */
typedef struct SIP_EVENT {
    int use;          /* D E */
    char content[64]; /* verbatim, longest 62; a SUBSCRIBE for "reg" or "dialog" also gets an Accept line; D E */
} SIP_EVENT;

/* Record-Route (RFC 3261 section 20.30): one value, or two joined by a comma in the order that the host needs. Written
 * as Record-Route in responses and as Route in requests. Three or more lines leave it as it was. */
typedef struct SIP_RECORD_ROUTE {
    int use;           /* D E */
    char content[128]; /* one value: longest 126; D E */
} SIP_RECORD_ROUTE;

/* Service-Route (RFC 3608) */
typedef struct SIP_SERVICE_ROUTE {
    int use;           /* D */
    char content[256]; /* verbatim, longest 254; D */
} SIP_SERVICE_ROUTE;

/* Date (RFC 3261 section 20.17) */
typedef struct SIP_DATE {
    int use;           /* encode: 1 writes the current time where the message kind has a Date; D E */
    char datetime[32]; /* verbatim, longest 30; D */
} SIP_DATE;

/* Replaces (RFC 3891) */
typedef struct SIP_REPLACES {
    int use;           /* D E */
    char content[256]; /* verbatim, longest 254; D E */
} SIP_REPLACES;

/* Referred-By (RFC 3892), kept verbatim beside what REFER_INFO takes out of it */
typedef struct SIP_REFERREDBY {
    int use;          /* D E */
    char content[64]; /* verbatim, longest 62; D E */
} SIP_REFERREDBY;

/* Subscription-State (RFC 6665 section 8.2.3) */
typedef struct SIP_SUBSCRIPTION_STATE {
    int use;          /* D E */
    char content[64]; /* verbatim, longest 62; D E */
} SIP_SUBSCRIPTION_STATE;

/* User-Agent (RFC 3261 section 20.41) */
typedef struct SIP_USER_AGENT {
    int use;             /* D E */
    int authencryptflag; /* for the host's own use; the library never touches it */
    char useragent[64];  /* verbatim, longest 62; D E */
} SIP_USER_AGENT;

/* Session-Expires or "x" (RFC 4028 section 4)
 *
 *   Session-Expires: 1800;refresher=uac
 *                    |              |
 *                    sessionexpires refresher: the text after the first "=" after the first ";", whatever its name
 */
typedef struct SIP_SESSION_EXPIRES {
    int use;            /* D E */
    int sessionexpires; /* seconds; D E */
    char refresher[8];  /* responses write "uas" if it is empty; D E */
} SIP_SESSION_EXPIRES;

/* Min-SE (RFC 4028 section 5) */
typedef struct SIP_MIN_SE {
    int use;   /* D E */
    int minse; /* seconds; D E */
} SIP_MIN_SE;

/* Min-Expires (RFC 3261 section 20.23) */
typedef struct SIP_MIN_EXPIRES {
    int use;         /* D */
    int min_expires; /* seconds; D */
} SIP_MIN_EXPIRES;

/* P-Early-Media (RFC 5009), written in a 180 only */
typedef struct SIP_P_EARLY_MEDIA {
    int use;          /* E */
    char content[32]; /* E */
} SIP_P_EARLY_MEDIA;

/* Call-Info (RFC 3261 section 20.9); written after a URI built from the From address */
typedef struct SIP_CALL_INFO {
    int use;           /* D E */
    char content[128]; /* verbatim; D E */
} SIP_CALL_INFO;

/* RAck (RFC 3262 section 7.2). It has no presence flag: rack not 0 means present. */
typedef struct SIP_RACK {
    int rack;   /* response number; D E */
    int cseq;   /* CSeq number; D E */
    int method; /* sip_code_method; 0 if the word is unknown, -1 if there is none; D E */
} SIP_RACK;

/* Supported or "k" (RFC 3261 section 20.37) */
typedef struct SIP_SUPPORTED {
    int use;                              /* decode: 0 if there is none; D E */
    char SUPPORTED[64];                   /* verbatim, longest 62; D E */
    SIP_SUPPORTED_TYPE supported_type[8]; /* the first eight tags; blanks count as part of a tag; D */
} SIP_SUPPORTED;

/* ------------------------------------------------------------------------------------------------------------------
 * Session description (RFC 4566)
 */

/* One dynamic RTP payload assignment, from "a=rtpmap:". */
typedef struct CODEC_RTPMAP {
    e_codec a_coder; /* SPEEX, ILBC or TE101; 0 marks a free slot; D E */
    int a_payload;   /* RTP payload number; D E */
} CODEC_RTPMAP;

/* T.38 fax parameters (ITU-T T.38 annex D), from an "image" media line and the attributes of the members' names. */
typedef struct FAX_INFO {
    int udptlport;                 /* UDPTL port; the attributes are read only if it is above 0; D E */
    int T38FaxMaxBuffer;           /* bytes; D, never written */
    int T38MaxBitRate;             /* bit/s; D E */
    int T38FaxVersion;             /* D E */
    int T38FaxMaxDatagram;         /* bytes; D E */
    int T38FaxFillBitRemoval;      /* D E */
    int T38FaxTranscodingMMR;      /* D E */
    int T38FaxTranscodingJBIG;     /* D E */
    char T38FaxRateManagement[32]; /* D E */
    char T38FaxUdpEC[32];          /* D E */
    IPV4_ADDRESS fax_addr;         /* connection address of the offer and the UDPTL port; D E */
} FAX_INFO;

/* Session description
 *
 *   c=IN IP4 10.0.0.5                          a_addr.ip, v_addr.ip, fax.fax_addr.ip
 *   m=audio 4000 RTP/AVP 8 0 101               a_use, a_addr.port, a_coders
 *   a=rtpmap:101 telephone-event/8000          a_coders, rtpmap        \
 *   a=ptime:20                                 a_ptime                  > a_content: the section's text
 *   a=sendonly                                 a_media                 /
 *   m=video 4002 RTP/AVP 99                    v_use, v_addr.port, v_coders
 *   a=rtpmap:99 H264/90000                     v_content: the section's text
 *   m=image 4004 udptl t38                     fax_use, fax.udptlport
 */
typedef struct SIP_SDP {
    int a_use;              /* 1: an audio stream; D E P */
    int v_use;              /* 1: a video stream; D E P */
    int fax_use;            /* 1: a T.38 stream; decode: 2 if the body has "a=SilcenceSupp"; D E */
    e_codec a_coders[8];    /* in offer order, static ones before dynamic ones; 0 is an empty slot; D E P (4) */
    int v_coders[8];        /* video payload numbers; only the first four are read or written; D E */
    char a_content[512];    /* audio section after its m-line; a direction line is added if it has none; D E */
    char v_content[512];    /* video section after its m-line; D E */
    IPV4_ADDRESS a_addr;    /* D E P */
    IPV4_ADDRESS v_addr;    /* D E P */
    FAX_INFO fax;           /* D E */
    long int o_sec;         /* version of the "o=" line if above 0; E */
    int o_sec_flag;         /* for the host's own use; the library never touches it */
    int a_conten_nouse;     /* 1: generate the audio attributes from the codecs; else a_content is written instead; E */
    int a_media;            /* SIP_MEDIA_DIRECTION; D E */
    int v_conten_nouse;     /* 1: generate the video attributes; else v_content is written instead; E */
    int v_media;            /* SIP_MEDIA_DIRECTION; E */
    int a_ptime;            /* packet time in milliseconds, written if above 0; decode: two digits are read; D E */
    CODEC_RTPMAP rtpmap[4]; /* D E; the SDP builder adds telephone events if a_coders has TE101 */
} SIP_SDP;

/* Body of a MESSAGE, SUBSCRIBE or NOTIFY as text */
typedef struct SIP_MES_SDP {
    int use;            /* encode: 1 sends content if no other body applies; D E */
    char content[3000]; /* longest 2998; D E */
} SIP_MES_SDP;

/* DTMF signal of an INFO */
typedef struct SIP_INFO {
    int use;      /* with content.use 1: the body is "Signal=" and key; D E P */
    char key[32]; /* encode: exactly one character, as the stated length of the body is fixed; D E P */
} SIP_INFO;

/* ------------------------------------------------------------------------------------------------------------------
 * Digest authentication (RFC 2617)
 */

/* Credentials: Authorization or Proxy-Authorization */
typedef struct SIP_AUTHOR {
    int use;            /* D E P */
    int author_type;    /* SIP_DIGEST_HEADER. Decode: the header that was read. Encode: the challenge that is answered:
                           ..._WWW_AUTHENTICATE writes Authorization, ..._PROXY_AUTHENTICATE writes
                           Proxy-Authorization, any other value writes nothing; D E P */
    int stale;          /* decode: -1 if not given, 0 FALSE, 1 TRUE; encode: not 0 adds ",stale=true"; D E P */
    int noncecount;     /* written as eight hexadecimal digits if qop is not empty; E */
    char username[64];  /* D E P */
    char realm[64];     /* D E P */
    char nonce[128];    /* D E P */
    char uri[64];       /* D E P */
    char response[64];  /* D E P */
    char algorithm[16]; /* the encoders always write "MD5"; D P */
    char cnonce[64];    /* written if qop is not empty; E */
    char qop[16];       /* if not empty the line carries "qop=auth", cnonce and the nonce count; E */
} SIP_AUTHOR;

/* Authentication-Info of a REGISTER transaction */
typedef struct NEXT_NONCE {
    int use;         /* 0 if there is none; D */
    char nonce[128]; /* "nextnonce="; D */
} NEXT_NONCE;

/* Challenge: WWW-Authenticate or Proxy-Authenticate */
typedef struct SIP_AUTHEN {
    int use;               /* D E P */
    int authen_type;       /* Decode: SIP_DIGEST_HEADER of the header that was read. Encode: the identifier of a 407
                              writes Proxy-Authenticate, any other value WWW-Authenticate; D E P */
    int stale;             /* 0 FALSE, 1 TRUE; the encoder always writes FALSE; D P */
    char realm[64];        /* D E P */
    char nonce[128];       /* D E P */
    char algorithm[16];    /* first item of the list; the encoder always writes "MD5"; D P */
    char qop[16];          /* as received, a quoted list included; D */
    NEXT_NONCE next_nonce; /* D */
} SIP_AUTHEN;

/* ------------------------------------------------------------------------------------------------------------------
 * Transfer, diversion, message waiting, XML body
 */

/* Refer-To and Referred-By of a REFER (RFC 3515, RFC 3892, RFC 3891)
 *
 *   Refer-To: <sip:1001@10.0.0.1?Replaces=98765%4010.0.0.3%3Bto-tag%3Dabc%3Bfrom-tag%3Ddef>
 *                  |    |                 |                         |              |
 *         refertotel    refertoip         callid                    refertotag     referfromtag
 */
typedef struct REFER_INFO {
    int use;                  /* D E */
    int refermode;            /* 1 attended (the URI carries "?Replaces="), 0 blind; D E */
    int tochn;                /* for the host's own use; the library never touches it */
    char refertoip[24];       /* D */
    char refertotel[32];      /* D E */
    char refertotag[128];     /* D */
    char referfromtag[128];   /* D */
    char callid[128];         /* Call-ID of the call to be replaced; D */
    char referbytel[32];      /* user part of the Referred-By URI; D */
    char referbyip[24];       /* host of the Referred-By URI; D */
    char refertocontent[256]; /* parameter text of an attended Refer-To; E */
} REFER_INFO;

/* One History-Info entry (RFC 7044) */
typedef struct SIP_HISTORY_INFO {
    int use;           /* D E */
    char user[32];     /* D E */
    IPV4_ADDRESS addr; /* D E */
    int index;         /* E */
    char cause[16];    /* the three characters after "cause="; written if not empty; D E */
} SIP_HISTORY_INFO;

/* Message-waiting summary (RFC 3842) */
typedef struct MESSAGE_SUMMARY {
    int use;                 /* decode: 1 for every NOTIFY with a body; D E */
    char messageswaiting[8]; /* longest 6; the encoder always writes "yes"; D */
    char account[32];        /* user part of the Message-Account URI; D E */
    int newmsgcount;         /* Voice-Message: 2/8 (0/2) has 2 new, 8 old, 0 urgent new and 2 urgent old; D E */
    int oldmsgcount;         /* D E */
    int urgentmsgcount;      /* D E */
    int urgentoldcount;      /* D E */
    IPV4_ADDRESS addr;       /* of the Message-Account URI; the encoder writes the host of To instead; D */
} MESSAGE_SUMMARY;

/* Body source of a message to encode; the decoder never touches it. */
typedef struct SIP_XML {
    int use;     /* SIP_XML_USE; E */
    pXmldoc xml; /* owned by the host; E */
} SIP_XML;

/* ------------------------------------------------------------------------------------------------------------------
 * The record: about 14 KB, members in fixed order
 */
typedef struct SIP_CODE_MSG {
    char xml_buf[4096];       /* decode: the message body; encode: the body text if xml.use is SIP_XML_TEXT; D E */
    int method;               /* sip_code_method of the start line, 0 if unknown; the encoders take 1 to 48; D E P */
    int via_count;            /* number of Vias, a line with a comma counting twice; 2 writes via1 above via; D E */
    char callid[128];         /* longest 126; the encoders remove a leading "ims-"; D E P */
    char korvadex[128];       /* "Korvadex-Extern" line, longest 126; D E */
    char korvadex_trunk[128]; /* "Korvadex" line, else "Korvadex-Extern", longest 126; D */
    int max_forward;          /* hops; the encoders always write 70; D P */
    int user_phone;           /* 1 adds ";user=phone" to the URIs of the request line, To, From, identity; E */
    SIP_VIA via;              /* the only Via, or the lower one of two; D E P */
    SIP_VIA via1;             /* the topmost of two Vias; D E */
    SIP_EXPIRE expire;        /* D E P */
    SIP_XML xml;              /* E */
    SIP_URI uri;              /* request URI; D E P */
    SIP_CSEQ cseq;            /* D E P */
    SIP_FROMTO from;          /* D E P */
    SIP_FROMTO to;            /* D E P */
    SIP_CONTACT contact;      /* D E P */
    SIP_SDP sdp;              /* D E P */
    SIP_CONTENT_TYPE content; /* D E P */
    SIP_INFO info;            /* D E P */
    SIP_AUTHEN authen;        /* D E P */
    SIP_AUTHOR author;        /* D E P */
    REFER_INFO refer_to;      /* D E */
    SIP_ALERT alert;          /* D E */
    SIP_SUPPORTED supported;  /* D E */
    SIP_REQUIRE require;      /* D E */
    SIP_RSEQ rseq;            /* D E */
    SIP_RACK rack;            /* D E */
    SIP_HISTORY_INFO history_info[4];             /* D E */
    SIP_REQUST_URI requst_uri;                    /* E */
    SIP_P_ASSERTED_IDENTITY p_passerted_identity; /* E */
    SIP_FROMTO callparty;                         /* P-Called-Party-ID: user and addr only; D */
    SIP_MES_SDP msg_sdp;                          /* D E */
    SIP_EVENT event;                              /* D E */
    SIP_RECORD_ROUTE record_route;                /* D E */
    SIP_DATE date;                                /* D E */
    TRANS_TYPE_E trans_type;                      /* transport token of Via and Contact; E */
    SIP_USER_AGENT user_agent;                    /* D E */
    SIP_SERVICE_ROUTE service_route;              /* D */
    SIP_REPLACES replaces;                        /* D E */
    SIP_REFERREDBY referred_by;                   /* D E */
    SIP_SUBSCRIPTION_STATE subscription_state;    /* D E */
    SIP_SESSION_EXPIRES session_expires;          /* D E */
    SIP_MIN_SE min_se;                            /* D E */
    SIP_MIN_EXPIRES min_expires;                  /* D */
    SIP_P_EARLY_MEDIA p_early_media;              /* E */
    MESSAGE_SUMMARY message_summary;              /* D E */
    SIP_CALL_INFO call_info;                      /* D E */
} SIP_CODE_MSG;

#undef SIPCODE_ENUM_INT

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif

#ifdef __cplusplus
}
#endif

#endif
