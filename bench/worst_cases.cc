#include "worst_cases.h"

namespace bench {
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

// The rows that are only text have no start line. They are refused, but only after they were split.
constexpr WorstCase rows[] = {
    {"text: CR", "", "\r", ""},
    {"text: LF", "", "\n", ""},
    {"text: blanks", "", " ", ""},

    {"start line: blanks", "INVITE", " ", "sip:b@h SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 INVITE\r\n" VIA "\r\n"},
    {"start line: @", "INVITE sip:", "@", " SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 INVITE\r\n" VIA "\r\n"},
    {"start line: %41", "INVITE sip:", "%41", "@h SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 INVITE\r\n" VIA "\r\n"},

    {"header lines: one letter", HEAD("INVITE"), "a\r\n", "\r\n"},
    {"header lines: CR", HEAD("INVITE"), "a\r", "\r\n\r\n"},
    {"header lines: continued by a comma", HEAD("INVITE") "X: ", ",\r\n", "\r\n"},
    {"header lines: Via, each with a comma", HEAD("INVITE"), "Via:,\r\n", "\r\n"},
    {"header lines: Record-Route", HEAD("INVITE"), "Record-Route: <sip:h;lr>\r\n", "\r\n"},
    {"header lines: Supported", HEAD("INVITE"), "Supported: timer,replaces,100rel,x,y,z,timer,timer\r\n", "\r\n"},
    {"header lines: blanks before the value", HEAD("INVITE") "Max-Forwards:", " ", "70\r\n\r\n"},

    {"CSeq: digits", "INVITE sip:b@h SIP/2.0\r\nCall-ID: c\r\n" VIA "CSeq: ", "1", " INVITE\r\n\r\n"},
    {"Expires: digits", HEAD("REGISTER") "Expires: ", "1", "\r\n\r\n"},

    {"Via: ;", HEAD("INVITE") "v: SIP/2.0/UDP h", ";", "\r\n\r\n"},
    {"Via: branch=", "INVITE sip:b@h SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 INVITE\r\nVia: SIP/2.0/UDP h;",
     "branch=", "\r\n\r\n"},
    {"Via: commas", "INVITE sip:b@h SIP/2.0\r\nCall-ID: c\r\nCSeq: 1 INVITE\r\nVia: SIP/2.0/UDP h", ",", "\r\n\r\n"},
    {"Via: two lines, ;branch=", HEAD("INVITE") "Via: SIP/2.0/UDP g", ";branch=", "\r\n\r\n"},
    {"Record-Route: two lines, commas", HEAD("INVITE") "Record-Route: <sip:g>\r\nRecord-Route: <sip:h>", ",",
     "\r\n\r\n"},

    {"From: quotes", HEAD("INVITE") "From: ", "\"", "\r\n\r\n"},
    {"From: escaped quotes", HEAD("INVITE") "From: \"", "\\\"", "\" <sip:a@h>\r\n\r\n"},
    {"From: <", HEAD("INVITE") "From: ", "<", "\r\n\r\n"},
    {"From: tag=", HEAD("INVITE") "From: <sip:a@h>;", "tag=", "\r\n\r\n"},
    {"From: @", HEAD("INVITE") "From: <sip:", "@", ">\r\n\r\n"},
    {"From: %41", HEAD("INVITE") "From: <sip:", "%41", "@h>\r\n\r\n"},
    {"From: :", HEAD("INVITE") "From: <sip:a@h", ":", ">\r\n\r\n"},
    {"Contact: <", HEAD("INVITE") "m: ", "<", "\r\n\r\n"},
    {"Contact: ;expires=", HEAD("REGISTER") "Contact: <sip:a@h>", ";expires=", "\r\n\r\n"},
    {"P-Called-Party-ID: <sip:", HEAD("INVITE") "P-Called-Party-ID: ", "<sip:", "\r\n\r\n"},

    {"Supported: commas", HEAD("INVITE") "Supported: ", ",", "\r\n\r\n"},
    {"Supported: timer,", HEAD("INVITE") "k: ", "timer,", "\r\n\r\n"},
    {"Session-Expires: ;", HEAD("INVITE") "Session-Expires: 90", ";", "\r\n\r\n"},
    {"History-Info: <>", HEAD("INVITE") "History-Info: ", "<>", "\r\n\r\n"},
    {"History-Info: <sip:a@h>,", HEAD("INVITE") "History-Info: ", "<sip:a@h?Reason=cause%3D480>;index=1,", "\r\n\r\n"},
    {"Refer-To: %41", HEAD("REFER") "Refer-To: <sip:a@h?Replaces=", "%41", ">\r\n\r\n"},
    {"Refer-To: ;to-tag=", HEAD("REFER") "Refer-To: <sip:a@h?Replaces=c", ";to-tag=", ">\r\n\r\n"},

    {"Authorization: realm=", HEAD("REGISTER") "Authorization: Digest ", "realm=", "\r\n\r\n"},
    {"Authorization: realm=\"\",", HEAD("REGISTER") "Authorization: Digest ", "realm=\"\",", "\r\n\r\n"},
    {"Authorization: quotes", HEAD("REGISTER") "Authorization: Digest ", "\"", "\r\n\r\n"},
    {"WWW-Authenticate: realm=", STATUS("401 U", "REGISTER") "WWW-Authenticate: Digest ", "realm=", "\r\n\r\n"},
    {"WWW-Authenticate: qop=\"", STATUS("407 P", "INVITE") "Proxy-Authenticate: Digest ", "qop=\"", "\r\n\r\n"},
    {"Authentication-Info: nextnonce=", STATUS("200 OK", "REGISTER") "Authentication-Info: ", "nextnonce=", "\r\n\r\n"},

    {"SDP: CR", SDP, "\r", ""},
    {"SDP: empty lines", SDP, "\r\n", ""},
    {"SDP: m= lines", SDP, "m=\r\n", ""},
    {"SDP: m=audio lines", SDP, "m=audio 1 RTP/AVP 0\r\n", ""},
    {"SDP: payloads", SDP "m=audio 1 RTP/AVP", " 0", "\r\n"},
    {"SDP: unknown payloads", SDP "m=audio 1 RTP/AVP", " 77", "\r\na=rtpmap:96 iLBC/8000\r\n"},
    {"SDP: c= lines", SDP, "c=IN IP4 h\r\n", ""},
    {"SDP: a=", AUDIO, "a=", ""},
    {"SDP: a= lines", AUDIO, "a=\r\n", ""},
    {"SDP: a=rtpmap lines", AUDIO, "a=rtpmap:96 telephone-event/8000\r\n", ""},
    {"SDP: a=rtpmap lines, blanks", AUDIO "a=rtpmap:96", " ", "iLBC/8000\r\n"},
    {"SDP: a=inactive", AUDIO, "a=inactive", ""},
    {"SDP: a=ptime lines", AUDIO, "a=ptime:20\r\n", ""},
    {"SDP: a=SilcenceSup", AUDIO, "a=SilcenceSup", ""},
    {"SDP: T.38 lines", IMAGE, "a=T38MaxBitRate:14400\r\n", ""},
    {"SDP: T.38 digits", IMAGE "a=T38FaxMaxBuffer:", "9", "\r\n"},

    {"summary: Voice-Message:", BODY("NOTIFY", "a/b"), "Voice-Message:", "\r\n"},
    {"summary: digits", BODY("NOTIFY", "a/b") "Voice-Message: ", "1", "/2 (3/4)\r\n"},
    {"INFO: Signal= lines", BODY("INFO", "application/dtmf-relay"), "Signal=5\r\n", ""},
    {"INFO: blanks", BODY("INFO", "application/dtmf") "5", " ", ""},

    {"report: twelve values cut at the end", HEAD("INVITE") "X: ", "x",
     "\r\nRequire: " LONG "\r\nSupported: " LONG "\r\nEvent: " LONG "\r\nDate: " LONG "\r\nUser-Agent: " LONG
     "\r\nReferred-By: " LONG "\r\nSubscription-State: " LONG "\r\nContent-Type: " LONG "\r\nFrom: <sip:" LONG "@" LONG
     ">\r\nTo: <sip:" LONG "@" LONG ">\r\n\r\n"},
};

} // namespace

std::string WorstCase::message(std::size_t length) const {
    std::string text(before);
    for (std::size_t size = before.size() + after.size() + unit.size(); size <= length; size += unit.size())
        text += unit;
    return text.append(after);
}

std::span<const WorstCase> worst_cases() { return rows; }

} // namespace bench
