#include "worst_cases.h"

#include <algorithm>

namespace linear {
namespace {

#define VIA "Via: SIP/2.0/UDP h;branch=z9hG4bK1\r\n"
#define HEAD(method) method " sip:b@h SIP/2.0\r\n" VIA "Call-ID: c\r\nCSeq: 1 " method "\r\n"
#define STATUS(line, method) "SIP/2.0 " line "\r\n" VIA "Call-ID: c\r\nCSeq: 1 " method "\r\n"
#define BODY(method, type) HEAD(method) "Content-Type: " type "\r\n\r\n"
#define SDP BODY("INVITE", "application/sdp") "v=0\r\nc=IN IP4 h\r\n"
#define AUDIO SDP "m=audio 1 RTP/AVP 0 96\r\n"
#define VIDEO SDP "m=video 1 RTP/AVP 96\r\n"
#define LONG "0123456789012345678901234567890123456789012345678901234567890123456789"
#define IMAGE SDP "m=image 1 udptl t38\r\n"

// What a sender may write anywhere, alone: without a start line it is refused, but only after it was split.
constexpr WorstCase rows[] = {
    {"text: CR", "", "\r", ""},
    {"text: LF", "", "\n", ""},
    {"text: CR LF", "", "\r\n", ""},
    {"text: blanks", "", " ", ""},
    {"text: commas", "", ",", ""},
    {"text: letters", "", "x", ""},

    {"start line: letters in the method", "", "x", " sip:b@h SIP/2.0\r\n\r\n"},
    {"start line: blanks", "INVITE", " ", "sip:b@h SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 INVITE\r\n" VIA "\r\n"},
    {"start line: @", "INVITE sip:", "@", " SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 INVITE\r\n" VIA "\r\n"},
    {"start line: %41", "INVITE sip:", "%41", "@h SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 INVITE\r\n" VIA "\r\n"},
    {"start line: ;", "INVITE sip:", ";", "@h SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 INVITE\r\n" VIA "\r\n"},
    {"start line: reason", "SIP/2.0 499 ", "x", "\r\nCall-ID: c\r\nCSeq: 1 INVITE\r\n" VIA "\r\n"},

    {"header lines: one letter", HEAD("INVITE"), "a\r\n", "\r\n"},
    {"header lines: one letter, LF", HEAD("INVITE"), "a\n", "\r\n"},
    {"header lines: CR", HEAD("INVITE"), "a\r", "\r\n\r\n"},
    {"header lines: empty but for a blank", HEAD("INVITE"), " \r\n", "\r\n"},
    {"header lines: continued by a comma", HEAD("INVITE") "X: ", ",\r\n", "\r\n"},
    {"header lines: v:", HEAD("INVITE"), "v:\r\n", "\r\n"},
    {"header lines: Via", HEAD("INVITE"), VIA, "\r\n"},
    {"header lines: Via, each with a comma", HEAD("INVITE"), "Via:,\r\n", "\r\n"},
    {"header lines: Record-Route", HEAD("INVITE"), "Record-Route: <sip:h;lr>\r\n", "\r\n"},
    {"header lines: To", HEAD("INVITE"), "To: \"b\" <sip:b@h>;tag=t\r\n", "\r\n"},
    {"header lines: Supported", HEAD("INVITE"), "Supported: timer,replaces,100rel,x,y,z,timer,timer\r\n", "\r\n"},
    {"header lines: Authorization", HEAD("REGISTER"), "Authorization: Digest realm=\"a\",nonce=\"b\"\r\n", "\r\n"},
    {"header lines: all 60 bytes long", HEAD("INVITE"), "X-Extension-Header: 0123456789012345678901234567890123456\r\n",
     "\r\n"},
    {"header lines: blanks before the value", HEAD("INVITE") "Max-Forwards:", " ", "70\r\n\r\n"},
    {"header lines: blanks after the name", HEAD("INVITE") "Max-Forwards", " ", ": 70\r\n\r\n"},

    {"Call-ID: letters", "INVITE sip:b@h SIP/2.0\r\nCSeq: 1 INVITE\r\n" VIA "Call-ID: ", "x", "\r\n\r\n"},
    {"CSeq: digits", "INVITE sip:b@h SIP/2.0\r\nCall-ID: c\r\n" VIA "CSeq: ", "1", " INVITE\r\n\r\n"},
    {"CSeq: blanks", "INVITE sip:b@h SIP/2.0\r\nCall-ID: c\r\n" VIA "CSeq: 1", " ", "INVITE\r\n\r\n"},
    {"RAck: digits", HEAD("PRACK") "RAck: 1 ", "1", " INVITE\r\n\r\n"},
    {"Expires: digits", HEAD("REGISTER") "Expires: ", "1", "\r\n\r\n"},

    {"Via: ;", HEAD("INVITE") "v: SIP/2.0/UDP h", ";", "\r\n\r\n"},
    {"Via: ;branch=", "INVITE sip:b@h SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 INVITE\r\nVia: SIP/2.0/UDP h",
     ";branch=", "\r\n\r\n"},
    {"Via: branch=", "INVITE sip:b@h SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 INVITE\r\nVia: SIP/2.0/UDP h;",
     "branch=", "\r\n\r\n"},
    {"Via: commas", "INVITE sip:b@h SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 INVITE\r\nVia: SIP/2.0/UDP h", ",", "\r\n\r\n"},
    {"Via: blanks", "INVITE sip:b@h SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 INVITE\r\nVia: SIP/2.0/UDP", " ", "h\r\n\r\n"},
    {"Via: two lines, ;branch=", HEAD("INVITE") "Via: SIP/2.0/UDP g", ";branch=", "\r\n\r\n"},
    {"Record-Route: <", HEAD("INVITE") "Record-Route: ", "<", "\r\n\r\n"},
    {"Record-Route: two lines, commas", HEAD("INVITE") "Record-Route: <sip:g>\r\nRecord-Route: <sip:h>", ",",
     "\r\n\r\n"},

    {"From: quotes", HEAD("INVITE") "From: ", "\"", "\r\n\r\n"},
    {"From: escaped quotes", HEAD("INVITE") "From: \"", "\\\"", "\" <sip:a@h>\r\n\r\n"},
    {"From: backslashes", HEAD("INVITE") "From: \"", "\\", "\r\n\r\n"},
    {"From: <", HEAD("INVITE") "From: ", "<", "\r\n\r\n"},
    {"From: >", HEAD("INVITE") "From: <sip:a@h", ">", "\r\n\r\n"},
    {"From: tag=", HEAD("INVITE") "From: <sip:a@h>;", "tag=", "\r\n\r\n"},
    {"From: ;tag=", HEAD("INVITE") "From: <sip:a@h>", ";tag=", "\r\n\r\n"},
    {"From: ;", HEAD("INVITE") "From: <sip:a@h>", ";", "\r\n\r\n"},
    {"From: @", HEAD("INVITE") "From: <sip:", "@", ">\r\n\r\n"},
    {"From: %41", HEAD("INVITE") "From: <sip:", "%41", "@h>\r\n\r\n"},
    {"From: :", HEAD("INVITE") "From: <sip:a@h", ":", ">\r\n\r\n"},
    {"To: quotes", HEAD("INVITE") "To: ", "\"", "\r\n\r\n"},
    {"To: tag=", HEAD("INVITE") "To: <sip:a@h>;", "tag=", "\r\n\r\n"},
    {"Contact: quotes", HEAD("INVITE") "Contact: ", "\"", "\r\n\r\n"},
    {"Contact: commas", HEAD("INVITE") "Contact: ", ",", "\r\n\r\n"},
    {"Contact: <", HEAD("INVITE") "m: ", "<", "\r\n\r\n"},
    {"Contact: ;expires=", HEAD("REGISTER") "Contact: <sip:a@h>", ";expires=", "\r\n\r\n"},
    {"P-Called-Party-ID: <sip:", HEAD("INVITE") "P-Called-Party-ID: ", "<sip:", "\r\n\r\n"},

    {"Supported: commas", HEAD("INVITE") "Supported: ", ",", "\r\n\r\n"},
    {"Supported: timer,", HEAD("INVITE") "k: ", "timer,", "\r\n\r\n"},
    {"Require: letters", HEAD("INVITE") "Require: ", "x", "\r\n\r\n"},
    {"Session-Expires: ;", HEAD("INVITE") "Session-Expires: 90", ";", "\r\n\r\n"},
    {"Session-Expires: =", HEAD("INVITE") "x: 90;", "=", "\r\n\r\n"},
    {"Min-SE: digits", HEAD("INVITE") "Min-SE: ", "9", "\r\n\r\n"},
    {"Service-Route: letters", STATUS("200 OK", "REGISTER") "Service-Route: ", "x", "\r\n\r\n"},
    {"Replaces: letters", HEAD("INVITE") "Replaces: ", "x", "\r\n\r\n"},
    {"History-Info: <", HEAD("INVITE") "History-Info: ", "<", "\r\n\r\n"},
    {"History-Info: <>", HEAD("INVITE") "History-Info: ", "<>", "\r\n\r\n"},
    {"History-Info: <sip:a@h>,", HEAD("INVITE") "History-Info: ", "<sip:a@h?Reason=cause%3D480>;index=1,", "\r\n\r\n"},
    {"History-Info: cause=", HEAD("INVITE") "History-Info: <", "cause=", ">\r\n\r\n"},
    {"Refer-To: %41", HEAD("REFER") "Refer-To: <sip:a@h?Replaces=", "%41", ">\r\n\r\n"},
    {"Refer-To: %", HEAD("REFER") "Refer-To: <sip:a@h?Replaces=", "%", ">\r\n\r\n"},
    {"Refer-To: ;to-tag=", HEAD("REFER") "Refer-To: <sip:a@h?Replaces=c", ";to-tag=", ">\r\n\r\n"},
    {"Refer-To: <", HEAD("REFER") "Refer-To: ", "<", "\r\n\r\n"},
    {"Referred-By: @", HEAD("REFER") "Refer-To: <sip:a@h>\r\nReferred-By: <sip:", "@", ">\r\n\r\n"},

    {"Authorization: realm=", HEAD("REGISTER") "Authorization: Digest ", "realm=", "\r\n\r\n"},
    {"Authorization: realm=\"\",", HEAD("REGISTER") "Authorization: Digest ", "realm=\"\",", "\r\n\r\n"},
    {"Authorization: a=b,", HEAD("REGISTER") "Authorization: Digest ", "a=b,", "\r\n\r\n"},
    {"Authorization: quotes", HEAD("REGISTER") "Authorization: Digest ", "\"", "\r\n\r\n"},
    {"Authorization: commas", HEAD("REGISTER") "Authorization: Digest ", ",", "\r\n\r\n"},
    {"Authorization: response=", HEAD("REGISTER") "Proxy-Authorization: Digest ", "response=", "\r\n\r\n"},
    {"WWW-Authenticate: realm=", STATUS("401 U", "REGISTER") "WWW-Authenticate: Digest ", "realm=", "\r\n\r\n"},
    {"WWW-Authenticate: algorithm=", STATUS("401 U", "REGISTER") "WWW-Authenticate: Digest ", "algorithm=a,",
     "\r\n\r\n"},
    {"WWW-Authenticate: qop=\"", STATUS("407 P", "INVITE") "Proxy-Authenticate: Digest ", "qop=\"", "\r\n\r\n"},
    {"Authentication-Info: nextnonce=", STATUS("200 OK", "REGISTER") "Authentication-Info: ", "nextnonce=", "\r\n\r\n"},

    {"SDP: letters", SDP, "x", ""},
    {"SDP: CR", SDP, "\r", ""},
    {"SDP: LF", SDP, "\n", ""},
    {"SDP: empty lines", SDP, "\r\n", ""},
    {"SDP: m=", SDP, "m=", ""},
    {"SDP: m= lines", SDP, "m=\r\n", ""},
    {"SDP: m=audio lines", SDP, "m=audio 1 RTP/AVP 0\r\n", ""},
    {"SDP: m=video lines", SDP, "m=video 1 RTP/AVP 96\r\n", ""},
    {"SDP: m=image lines", SDP, "m=image 1 udptl t38\r\n", ""},
    {"SDP: m=audio and m=video in turns", SDP, "m=audio 1 RTP/AVP 0\r\nm=video 1 RTP/AVP 96\r\n", ""},
    {"SDP: payloads", SDP "m=audio 1 RTP/AVP", " 0", "\r\n"},
    {"SDP: unknown payloads", SDP "m=audio 1 RTP/AVP", " 77", "\r\na=rtpmap:96 iLBC/8000\r\n"},
    {"SDP: video payloads", SDP "m=video 1 RTP/AVP", " 96", "\r\n"},
    {"SDP: payload digits", SDP "m=audio 1 RTP/AVP ", "0", "\r\n"},
    {"SDP: c=", SDP, "c=", ""},
    {"SDP: c= lines", SDP, "c=IN IP4 h\r\n", ""},
    {"SDP: a=", AUDIO, "a=", ""},
    {"SDP: a= lines", AUDIO, "a=\r\n", ""},
    {"SDP: a= lines, LF", AUDIO, "a=\n", ""},
    {"SDP: a=rtpmap:", AUDIO, "a=rtpmap:", ""},
    {"SDP: a=rtpmap lines", AUDIO, "a=rtpmap:96 telephone-event/8000\r\n", ""},
    {"SDP: a=rtpmap lines, blanks", AUDIO "a=rtpmap:96", " ", "iLBC/8000\r\n"},
    {"SDP: a=sendrecv lines", AUDIO, "a=sendrecv\r\n", ""},
    {"SDP: a=inactive", AUDIO, "a=inactive", ""},
    {"SDP: a=send", AUDIO, "a=send", ""},
    {"SDP: a=ptime lines", AUDIO, "a=ptime:20\r\n", ""},
    {"SDP: a=ptime:", AUDIO, "a=ptime:", ""},
    {"SDP: a=SilcenceSup", AUDIO, "a=SilcenceSup", ""},
    {"SDP: a= behind video", VIDEO, "a=x\r\n", ""},
    {"SDP: T.38 lines", IMAGE, "a=T38MaxBitRate:14400\r\n", ""},
    {"SDP: a=T38", IMAGE, "a=T38", ""},
    {"SDP: T.38 digits", IMAGE "a=T38FaxMaxBuffer:", "9", "\r\n"},
    {"SDP: T.38 text", IMAGE "a=T38FaxRateManagement:", "x", "\r\n"},

    {"summary: Voice-Message:", BODY("NOTIFY", "a/b"), "Voice-Message:", "\r\n"},
    {"summary: Voice-Message lines", BODY("NOTIFY", "a/b"), "Voice-Message: 1/2 (3/4)\r\n", ""},
    {"summary: Message-Account: sip:", BODY("NOTIFY", "a/b"), "Message-Account: sip:", "\r\n"},
    {"summary: digits", BODY("NOTIFY", "a/b") "Voice-Message: ", "1", "/2 (3/4)\r\n"},
    {"INFO: Signal=", BODY("INFO", "application/dtmf-relay"), "Signal=", "\r\n"},
    {"INFO: Signal= lines", BODY("INFO", "application/dtmf-relay"), "Signal=5\r\n", ""},
    {"INFO: blanks", BODY("INFO", "application/dtmf") "5", " ", ""},
    {"MESSAGE: letters", BODY("MESSAGE", "text/plain"), "x", ""},

    {"report: twelve values cut at the end", HEAD("INVITE") "X: ", "x",
     "\r\nRequire: " LONG "\r\nSupported: " LONG "\r\nEvent: " LONG "\r\nDate: " LONG "\r\nUser-Agent: " LONG
     "\r\nReferred-By: " LONG "\r\nSubscription-State: " LONG "\r\nContent-Type: " LONG "\r\nFrom: <sip:" LONG "@" LONG
     ">\r\nTo: <sip:" LONG "@" LONG ">\r\n\r\n"},
};

struct Growing {
    std::string_view header;
    std::string_view sdp;
};

// In the order in which they are added.
constexpr Growing growing[] = {
    {"Max-Forwards: 70\r\n", "a=rtpmap:8 PCMA/8000\r\n"},
    {"Contact: <sip:1001@192.0.2.20:5062;transport=udp>\r\n", "a=rtpmap:0 PCMU/8000\r\n"},
    {"User-Agent: Deskphone 7.2.1\r\n", "a=rtpmap:101 telephone-event/8000\r\n"},
    {"Supported: timer,replaces,100rel\r\n", "a=fmtp:101 0-15\r\n"},
    {"Allow: INVITE,ACK,BYE,CANCEL,OPTIONS,PRACK,UPDATE,INFO,REFER,NOTIFY\r\n", "a=ptime:20\r\na=sendrecv\r\n"},
    {"Session-Expires: 1800;refresher=uac\r\n", "a=rtcp:16385\r\n"},
    {"Min-SE: 90\r\n", "a=rtpmap:18 G729/8000\r\n"},
    {"Record-Route: <sip:192.0.2.2;lr;ftag=88asd112>\r\n", "a=fmtp:18 annexb=no\r\n"},
    {"Via: SIP/2.0/UDP 192.0.2.30:5060;received=192.0.2.31;branch=z9hG4bK3f9ac14e77b2\r\n", "a=maxptime:60\r\n"},
    {"P-Asserted-Identity: \"Front Desk\" <sip:1001@switch.example.com>\r\n", "a=rtcp-xr:rcvr-rtt=all\r\n"},
    {"History-Info: <sip:1002@switch.example.com>;index=1,<sip:1003@switch.example.com>;index=1.1\r\n",
     "a=rtcp-fb:* nack\r\na=rtcp-mux\r\n"},
    {"Authorization: Digest username=\"1001\",realm=\"switch.example.com\",nonce=\"c60f3082ee1212b402a21831ae\","
     "uri=\"sip:1002@switch.example.com\",response=\"245f23415f11432b3434341c022\",algorithm=MD5\r\n",
     "a=candidate:1 1 UDP 2130706431 192.0.2.20 16386 typ host\r\n"},
    {"Allow-Events: talk,hold,conference,refer,check-sync,message-summary\r\n",
     "a=candidate:2 1 UDP 1694498815 198.51.100.20 16386 typ srflx raddr 192.0.2.20 rport 16386\r\n"},
    {"Date: Thu, 19 Nov 2026 09:44:03 GMT\r\n", "a=extmap:3 urn:ietf:params:rtp-hdrext:sdes:mid\r\n"},
    {"Accept: application/sdp, application/dtmf-relay\r\n", "a=setup:actpass\r\n"},
    {"P-Access-Network-Info: IEEE-802.3\r\n", "a=mid:audio\r\n"},
    {"Accept-Language: en\r\n", "a=ssrc:314159 cname:1001@192.0.2.20\r\n"},
    {"Privacy: none\r\n", "a=content:main\r\n"},
};

} // namespace

std::string WorstCase::message(std::size_t length) const {
    std::string text(before);
    for (std::size_t size = before.size() + after.size() + unit.size(); size <= length; size += unit.size())
        text += unit;
    return text.append(after);
}

std::span<const WorstCase> worst_cases() { return rows; }

std::string plain_message(std::size_t length) {
    std::string header = "INVITE sip:1002@switch.example.com SIP/2.0\r\n"
                         "Via: SIP/2.0/UDP 192.0.2.20:5062;branch=z9hG4bKnashds8a1b\r\n"
                         "From: \"1001\" <sip:1001@switch.example.com>;tag=88asd112\r\n"
                         "To: <sip:1002@switch.example.com>\r\n"
                         "Call-ID: 5f2c81d09b3e4a7c@192.0.2.20\r\n"
                         "CSeq: 102 INVITE\r\n"
                         "Content-Type: application/sdp\r\n";
    std::string sdp = "v=0\r\no=- 8000 8001 IN IP4 192.0.2.20\r\ns=-\r\nc=IN IP4 192.0.2.20\r\nt=0 0\r\n"
                      "m=audio 16384 RTP/AVP 8 0 101\r\n";
    constexpr std::string_view more = "a=candidate:3 1 UDP 16777215 203.0.113.9 40020 typ relay raddr 192.0.2.20\r\n";
    const auto fits = [&](std::size_t added) { return header.size() + 2 + sdp.size() + added <= length; };
    for (const Growing &line : growing) {
        if (fits(line.header.size()))
            header += line.header;
        if (fits(line.sdp.size()))
            sdp += line.sdp;
    }
    while (fits(more.size()))
        sdp += more;
    return header + "\r\n" + sdp;
}

} // namespace linear
