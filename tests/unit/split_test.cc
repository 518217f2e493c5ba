// A message cut into start line, header lines and body.
#include <gtest/gtest.h>

#include "support/cases.h"

namespace {

using namespace support;

const std::string rest = "Call-ID: c\r\nCSeq: 1 OPTIONS\r\nVia: SIP/2.0/UDP h;branch=b\r\nFrom: sip:f\r\nTo: sip:t\r\n";

const Frame header_lines{"OPTIONS sip:h SIP/2.0\r\n" + rest, "", "\r\n", stale, true};
const Case headers[] = {
    {"LF ends a line", "Date: d\nEvent: e\n\nb", "xml_buf=b | event use=1 content=e | date use=1 datetime=d"},
    {"the body is kept as it is", "\r\na\r\n\r\nb,\r\n,\n\rc", "xml_buf=a\\r\\n\\r\\nb,\\r\\n,\\n\\rc"},
    {"a comma before CR LF joins two lines", "Date: a,\r\n b\r\n\r\n", "date use=1 datetime=a,\\r\\n b"},
    {"a comma two before LF does", "Date: a,b\nEvent: e\r\n\r\n", "date use=1 datetime=a,b\\nEvent: e"},
    {"a comma three before LF does not", "Date: a,bc\nEvent: e\r\n\r\n",
     "event use=1 content=e | date use=1 datetime=a,bc"},
    {"a comma eats the empty line behind it", "Date: a,\r\n\r\nEvent: e\r\n\r\nb",
     "xml_buf=b | event use=1 content=e | date use=1 datetime=a,\\r\\n"},
    {"a comma hides the line behind two LF", "Date: a,\n\nEvent: e\r\n\r\nb", "xml_buf=b | date use=1 datetime=a,"},
    {"a CR ends a value but not its line", "Date: a\rb\r\nEvent: e\r\n\r\n",
     "event use=1 content=e | date use=1 datetime=a"},
    {"a CR behind a comma ends nothing", "Date: a,\rb\r\n\r\n", "date use=1 datetime=a,\\rb"},
    {"a line that begins with CR is the empty line", "\rDate: d\r\nb", "xml_buf=b"},
    {"a blank line is not", " \r\nDate: d\r\n\r\nb", "xml_buf=b | date use=1 datetime=d"},
    {"a line that begins with a blank is one of its own", "Date: a\r\n Event: e\r\n\tb\r\n\r\n",
     "date use=1 datetime=a"},

    {"blanks behind the colon are skipped, at the end kept", "Date:\t\x01 d \t\r\n\r\n", "date use=1 datetime=d \\x09"},
    {"a compact name alone", "m\r\nk\r\n" + letters(40) + "\r\n\r\n", ""},
    {"the first of two counts, empty or not", "Date:\r\nEvent: 1\r\nDate: d\r\nEvent: 2\r\n\r\n",
     "event use=1 content=1 | date use=1 datetime="},
};
INSTANTIATE_TEST_SUITE_P(HeaderLines, Decoding, in_frame(header_lines, headers), Title());

const Frame start_line{"", "\r\n" + rest + "\r\n", "OPTIONS sip:h SIP/2.0"};
const std::string response = "uri addr=?:?";
std::string stood_in(const std::string &status) {
    return "1 recv sip response method: [" + status + "], transfer to 480";
}
const Case start_lines[] = {
    {"blanks of all kinds", " \t\x01OPTIONS \t\x01sip:h\x1F SIP/2.0 \t\x01 ", ""},
    {"a CR behind a comma that is the first byte", ",\rsip:h SIP/2.0", "method=0"},
    {"no blank but the lowest visible character", "OPTIONS sip:!@h SIP/2.0", "uri user=!"},
    {"a method that is not known", "OPTION sip:h SIP/2.0", "method=0"},
    {"a status without a phrase", "sip/2.0 \t 486  ", "method=30 | " + response},
    {"a status that reads like a method", "SIP/2.0 Info", "method=13 | " + response},
    {"a status between 400 and 699", "SIP/2.0 499 Gone \t", "method=27 | " + response, stood_in("499 Gone")},
    {"a status above 699", "SIP/2.0 700", "method=0 | " + response, stood_in("700")},
    {"the Call-ID in the start line", "Call-ID:s sip:h SIP/2.0", "method=0 | callid=s"},
    {"a Via in the start line ends where that is cut", "v: sip:a,b SIP/2.0",
     "method=0 | via_count=2 | via addr=h:? | uri addr=a,b:5060"},
};
INSTANTIATE_TEST_SUITE_P(StartLine, Decoding, in_frame(start_line, start_lines), Title());

const Frame refused_line{"", "\r\n" + rest + "\r\n", "none"};
const Case refused_lines[] = {
    {"empty", "", "result=-1"},
    {"an empty line before the start line", "\nOPTIONS sip:h SIP/2.0", "result=-1"},
    {"a method alone", "OPTIONS", "result=-1"},
    {"no protocol", "OPTIONS sip:h", "result=-1", "0 Bad request protocol "},
    {"another protocol", "OPTIONS sip:h SIP/2.1", "result=-1", "0 Bad request protocol SIP/2.1"},
    {"case is folded for letters only", "OPTIONS sip:h SIP\0172.0", "result=-1", "0 Bad request protocol SIP\\x0F2.0"},
    {"a request URI in brackets", "OPTIONS <sip:h> SIP/2.0", "result=-1", "0 bogus uri in <> <sip:h> SIP/2.0"},
    {"a request URI in an unclosed bracket", "OPTIONS <sip:h SIP/2.0 ", "result=-1",
     "0 bogus uri in <> <sip:h SIP/2.0 | 1 No closing bracket found in '<sip:h SIP/2.0'"},
    {"a response without a status", "SIP/2.0", "result=-1"},
};
INSTANTIATE_TEST_SUITE_P(StartLineRefused, Decoding, in_frame(refused_line, refused_lines), Title());

} // namespace
