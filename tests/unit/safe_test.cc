// Untrusted text and records: what SIP_Decode_Buffer reports, and what the encoders refuse.
#include <algorithm>
#include <cstring>

#include <gtest/gtest.h>

#include "support/decoding.h"
#include "support/encoding.h"
#include "support/guarded.h"
#include "support/members.h"

#include <sipcode/decode.h>
#include <sipcode/safe.h>

namespace {

using namespace support;

constexpr std::string_view headers = "Via: SIP/2.0/UDP 192.0.2.1;branch=z9\nCall-ID: a\nCSeq: 1 BYE\n";

std::string message(std::string_view more = "", std::string_view start = "BYE sip:b@192.0.2.2 SIP/2.0\n") {
    return wire(std::string(start) + std::string(headers) + std::string(more) + "\n");
}

// Decodes bytes at a guard page into a stale record at one.
SIP_DECODE_REPORT report_of(std::string_view bytes, SIP_CODE_MSG *decoded = nullptr) {
    const Guarded data = Guarded::bytes(bytes);
    const Guarded record(sizeof(SIP_CODE_MSG), stale);
    const Guarded report(sizeof(SIP_DECODE_REPORT), stale);
    const int result =
        SIP_Decode_Buffer(data.data(), bytes.size(), &record.as<SIP_CODE_MSG>(), &report.as<SIP_DECODE_REPORT>());
    EXPECT_EQ(result, report.as<SIP_DECODE_REPORT>().outcome);
    if (decoded != nullptr)
        *decoded = record.as<SIP_CODE_MSG>();
    return report.as<SIP_DECODE_REPORT>();
}

// "-7 Call-ID 4:1": outcome, header, line and column.
std::string refusal_of(std::string_view bytes) {
    const SIP_DECODE_REPORT report = report_of(bytes);
    return std::to_string(report.outcome) + ' ' + report.header + ' ' + std::to_string(report.line) + ':' +
           std::to_string(report.column);
}

TEST(SafeDecode, reports_why_and_where_it_refused) {
    struct Row {
        std::string text;
        std::string reported;
    };
    const Row rows[] = {
        {"", "-2  1:1"},
        {wire("\n"), "-2  1:1"},
        {wire("BYE\n") + std::string(headers), "-2  1:1"},
        {message("", "SIP/2.0 20\n"), "-3  1:9"},
        {message("", "BYE <sip:b> SIP/2.0\n"), "-4  1:5"},
        {message("", "BYE sip:b HTTP/1.1\n"), "-5  1:11"},
        {wire("BYE sip:b SIP/2.0\n\n"), "-6  2:1"},
        {"BYE sip:b SIP/2.0", "-6  1:18"},
        {wire("BYE sip:b SIP/2.0\nCSeq: 1 BYE\nTo: a\n\nbody"), "-7 Call-ID 4:1"},
        {wire("BYE sip:b SIP/2.0\nCall-ID: a\nTo: a\n\n"), "-8 CSeq 4:1"},
        {wire("BYE sip:b SIP/2.0\ni: a\nCSeq:  x 1\n\n"), "-9 CSeq 3:8"},
        {wire("BYE sip:b SIP/2.0\ni: a\nCSeq: 1 BYE\n\n"), "-10 Via 4:1"},
        {message(), "1  0:0"},
    };
    for (const Row &row : rows)
        EXPECT_EQ(refusal_of(row.text), row.reported) << row.text;

    SIP_CODE_MSG record;
    SIP_DECODE_REPORT report;
    EXPECT_EQ(SIP_Decode_Buffer(nullptr, 1, &record, &report), SIP_DECODE_NULL_ARGUMENT);
    EXPECT_EQ(SIP_Decode_Buffer("", 0, nullptr, &report), SIP_DECODE_NULL_ARGUMENT);
    EXPECT_EQ(report.outcome, SIP_DECODE_NULL_ARGUMENT);
    EXPECT_EQ(report.left_out + report.line + report.column + report.cut_count, 0);
    EXPECT_EQ(SIP_Decode_Buffer(message().data(), message().size(), &record, nullptr), SIP_DECODE_DONE);
}

// "via.branch 130>127 2:40": member, characters received and kept, place. "-" is a value cut before it was read.
std::string cuts_of(std::string_view bytes) {
    const SIP_DECODE_REPORT report = report_of(bytes);
    std::string list;
    for (const SIP_DECODE_CUT &cut :
         std::vector(report.cuts, report.cuts + std::min(report.cut_count, SIP_DECODE_CUTS))) {
        const auto all = leaves();
        const auto at = std::ranges::find_if(all, [&](const Leaf &leaf) {
            return cut.member >= 0 && leaf.offset == static_cast<std::size_t>(cut.member);
        });
        list += std::string(list.empty() ? "" : " | ") + (at == all.end() ? "-" : at->path) + ' ' +
                std::to_string(cut.length) + '>' + std::to_string(cut.kept) + ' ' + std::to_string(cut.line) + ':' +
                std::to_string(cut.column);
    }
    return list;
}

TEST(SafeDecode, reports_which_values_it_cut) {
    struct Row {
        std::string text;
        std::string reported;
    };
    const auto with = [](const std::string &header) { return message(header + "\n"); };
    const std::string sdp = wire("Content-Type: application/sdp\n\nv=0\nc=IN IP4 192.0.2.1\nm=audio 1 RTP/AVP 0\n");
    const std::string invite = wire("INVITE sip:b SIP/2.0\nVia: SIP/2.0/UDP h;branch=z\ni: a\nCSeq: 1 INVITE\n");
    const auto challenge = [](const std::string &parameters) {
        return wire("SIP/2.0 401 Unauthorized\nVia: SIP/2.0/UDP h;branch=z\ni: a\nCSeq: 1 INVITE\n") +
               wire("WWW-Authenticate: Digest " + parameters + "\n");
    };
    const auto connection = [](std::size_t length) {
        return wire("Content-Type: application/sdp\n\nc=IN IP4 " + letters(length) + "\nm=image 1 x\n");
    };
    const Row rows[] = {
        {with("User-Agent: " + letters(62)), ""},
        {with("User-Agent: " + letters(63)), "user_agent.useragent 63>62 5:13"},
        {with("Call-Info: " + letters(127)), ""},
        {with("Call-Info: " + letters(128)), "call_info.content 128>127 5:12"},
        {with("From: <sip:" + letters(32) + "@h>;tag=" + letters(128)), "from.user 32>31 5:12 | from.tag 128>127 5:52"},
        {with("To: <sip:u@" + letters(24) + ">"), "to.addr.ip 24>23 5:12"},
        {with("m: <sip:a@h>;" + letters(246)), "- 256>255 5:4"},
        {with("From: <sip:" + letters(32) + ";x@h>"), "from.user 32>31 0:0"},
        {with("Expires: 1" + letters(500)), ""},
        {with("Min-SE: 1" + letters(63)), "- 64>63 5:9"},
        {with("Record-Route: " + letters(100) + "\nRecord-Route: " + letters(200)), "record_route.content 301>127 0:0"},
        {with("History-Info: <sip:a@h;cause=302>, <sip:a@h;cause=30;5x>"), ""},
        {with("History-Info: <sip:a@h;cause=abcd;x>"), "history_info[0].cause 4>3 0:0"},
        {with("History-Info: <sip:a@h;cause=3021>"), "history_info[0].cause 4>3 0:0"},
        {challenge("algorithm=MD5," + letters(40)), ""},
        {challenge("algorithm=" + letters(40)), "authen.algorithm 40>15 5:36"},
        {challenge("algorithm=" + std::string(25, ',') + "MD5-sess"), "authen.algorithm 8>6 5:61"},
        {invite + sdp + wire("a=ptime:20\na=ptime:100"), ""},
        {invite + sdp + "a=ptime:5\n12", ""},
        {invite + sdp + "a=ptime:x5123", ""},
        {invite + sdp + wire("a=ptime:100\n"), "sdp.a_ptime 3>2 10:9"},
        {with("Record-Route: " + letters(63) + "\nRecord-Route: " + letters(63)), ""},
        {with("Record-Route: " + letters(63) + "\nRecord-Route: " + letters(64)), "record_route.content 128>127 0:0"},
        {with("Record-Route: a\nRecord-Route: " + letters(241)), "record_route.content 243>127 0:0"},
        {with("Record-Route: a\nRecord-Route: " + letters(242)), "- 256>255 6:1 | record_route.content 243>127 0:0"},
        {invite + connection(256), "sdp.fax.fax_addr.ip 256>23 7:10"},
        {invite + connection(257), "- 257>256 7:10 | sdp.fax.fax_addr.ip 256>23 7:10"},
        {wire("NOTIFY sip:b SIP/2.0\nVia: SIP/2.0/UDP h;branch=z\ni: a\nCSeq: 1 NOTIFY\n\n") + letters(510), ""},
        {wire("NOTIFY sip:b SIP/2.0\nVia: SIP/2.0/UDP h;branch=z\ni: a\nCSeq: 1 NOTIFY\n\n") + letters(511),
         "- 511>510 6:1"},
        {wire("INFO sip:b SIP/2.0\nVia: SIP/2.0/UDP h;branch=z\ni: a\nCSeq: 1 INFO\nc: application/dtmf\n\n") +
             letters(32),
         "info.key 32>31 7:1"},
        {invite + sdp + letters(512), "sdp.a_content 512>0 10:1"},
    };
    for (const Row &row : rows)
        EXPECT_EQ(cuts_of(row.text), row.reported) << row.text;

    // Cuts that the report has no room for are counted.
    std::string many;
    for (int i = 0; i < 20; ++i)
        many += "a=T38FaxUdpEC:" + letters(40) + "\n";
    const std::string fax = invite + wire("Content-Type: application/sdp\n\nc=IN IP4 h\nm=image 1 udptl t38\n" + many);
    EXPECT_EQ(report_of(fax).cut_count, 20);
}

TEST(SafeDecode, uses_no_more_than_it_should) {
    const std::string filler = message("User-Agent: x\n") + letters(5000);
    const auto left_out = [](std::string_view text) { return report_of(text).left_out; };
    EXPECT_EQ(left_out(filler.substr(0, 4095)), 0);
    EXPECT_EQ(left_out(filler.substr(0, 4096)), 1);
    const std::string ended = filler.substr(0, 4095) + '\0' + "x";
    EXPECT_EQ(left_out(ended), 0);

    SIP_CODE_MSG record;
    report_of(message("User-Agent: x\n") + '\0' + "Event: y", &record);
    EXPECT_STREQ(record.user_agent.useragent, "x");
    EXPECT_STREQ(record.xml_buf, "");
}

using Encode = int (*)(char *buffer, size_t size, SIP_CODE_MSG *record);

// Encodes into a buffer of this size. A refusal leaves an empty text and the record as it was.
int result_of(Encode encode, const SIP_CODE_MSG &record, std::size_t room, std::string *text = nullptr) {
    const Guarded input(sizeof record, zero);
    const Guarded output(room, stale);
    input.as<SIP_CODE_MSG>() = record;
    const int result = encode(output.data(), room, &input.as<SIP_CODE_MSG>());
    if (result < 0) {
        EXPECT_STREQ(output.data(), "");
        EXPECT_EQ(std::memcmp(&input.as<SIP_CODE_MSG>(), &record, sizeof record), 0);
    }
    if (text != nullptr)
        *text = output.data();
    return result;
}

constexpr std::string_view invite =
    "method=INVITE | uri.user=b | uri.addr.ip=192.0.2.2 | via_count=1 | via.branch=z9hG4bK1 | via.addr.ip=192.0.2.1 | "
    "from.user=a | from.addr.ip=192.0.2.1 | from.tag=f | to.user=b | to.addr.ip=192.0.2.2 | callid=ims-c | "
    "cseq.seq=1 | cseq.method=INVITE | contact.user=a | contact.addr.ip=192.0.2.1 | contact.addr.port=5060";

SIP_CODE_MSG invite_with(const std::string &more) { return record_of(std::string(invite) + " | " + more); }

TEST(SafeEncode, refuses_what_would_break_the_message_apart) {
    struct Row {
        std::string members;
        int request;
        int response; // to the same, as a 200
    };
    constexpr int written = 1;
    constexpr int broken = SIP_ENCODE_BROKEN_TEXT;
    const Row rows[] = {
        {"trans_type=0", written, written},
        {"korvadex=<\"\\>", written, written},        // a line of its own
        {"korvadex_trunk=a\\r\\n", written, written}, // never written
        {"user_agent.use=1 | user_agent.useragent=a\\n", broken, written},
        {"user_agent.use=0 | user_agent.useragent=a\\n", written, written},
        {"uri.user=b c", broken, written},
        {"uri.addr.ip=h SIP/2.0\\r\\nX:", broken, written},
        {"to.tag_use=1 | to.tag=t\\r", broken, broken},
        {"author.use=1 | author.author_type=102 | author.realm=a\"", broken, written},
        {"authen.use=1 | authen.authen_type=401 | authen.realm=a\"", written, broken},
        {"content.use=1", SIP_ENCODE_NO_BODY, SIP_ENCODE_NO_BODY},
        {"content.use=1 | xml.use=1", SIP_ENCODE_NO_BODY, SIP_ENCODE_NO_BODY},
        {"content.use=1 | content.type=a\\r | info.use=1 | info.key=5", broken, broken},
        {"content.use=1 | info.use=1 | info.key=5", written, written},
        {"content.use=1 | info.use=1 | info.key=55", broken, broken},
        {"content.use=1 | info.use=1", broken, broken},
        {"content.use=1 | msg_sdp.use=1 | msg_sdp.content=a\\r\\n\"<", written, SIP_ENCODE_NO_BODY},
        {"content.use=1 | message_summary.use=1 | message_summary.account=a\\n", broken, SIP_ENCODE_NO_BODY},
        {"content.use=1 | sdp.a_use=1 | sdp.a_content=a=x\\r\\n", written, written},
        {"content.use=1 | sdp.a_use=1 | sdp.a_addr.ip=h\\r\\na=x", broken, broken},
        {"method=0", SIP_ENCODE_BAD_METHOD, written},
        {"method=49", SIP_ENCODE_BAD_METHOD, written},
    };
    for (const Row &row : rows) {
        SIP_CODE_MSG record = invite_with(row.members);
        EXPECT_EQ(std::min(result_of(SIP_Encode_Request_Buffer, record, SIP_REQUEST_SIZE), 1), row.request)
            << row.members;
        record.method = SIP_RESPONSE_MSG_200_OK;
        EXPECT_EQ(std::min(result_of(SIP_Encode_Response_Buffer, record, SIP_RESPONSE_SIZE), 1), row.response)
            << row.members;
    }
}

TEST(SafeEncode, judges_each_byte_by_its_place) {
    SIP_CODE_MSG record = invite_with("to.tag_use=1");
    const std::string blanks = [] {
        std::string all;
        for (char c = 1; c <= ' '; ++c)
            all += c;
        return all;
    }();
    const struct {
        char *member;
        std::size_t room;
        std::string refused;
        bool ends_line;
    } rows[] = {
        {record.callid, sizeof record.callid, "\r\n", true},
        {record.to.tag, sizeof record.to.tag, "\r\n", true},
        {record.via.addr.ip, sizeof record.via.addr.ip, "\r\n", false},
        {record.from.user, sizeof record.from.user, "\r\n\"\\<>", false}, // between quotes, and between brackets
        {record.contact.user, sizeof record.contact.user, "\r\n\"<>", false},
        {record.uri.user, sizeof record.uri.user, blanks, false},
    };
    char buffer[SIP_REQUEST_SIZE];
    for (const auto &[member, room, refused, ends_line] : rows) {
        const SIP_CODE_MSG before = record;
        for (const std::size_t length : {1U, 7U, 15U, 16U, 17U, 23U, 24U, 31U, 127U, 128U})
            for (const std::size_t at : {std::size_t{0}, length / 2, length - 1})
                for (int c = 1; c < 256 && length <= room; ++c) {
                    std::memset(member, 'x', length);
                    std::memset(member + length, '\0', room - length);
                    member[at] = static_cast<char>(c);
                    const bool is_refused = refused.find(static_cast<char>(c)) != std::string::npos ||
                                            (ends_line && c == ',' && at == length - 1);
                    ASSERT_EQ(SIP_Encode_Request_Buffer(buffer, sizeof buffer, &record) < 0, is_refused)
                        << length << " characters, " << c << " at " << at;
                }
        record = before;
    }
}

TEST(SafeEncode, knows_its_room) {
    const SIP_CODE_MSG record = invite_with("content.use=1 | sdp.a_use=1 | sdp.a_coders[0]=5 | via_count=2");
    const std::string whole = encode_request(record).text;
    std::string text;
    EXPECT_EQ(result_of(SIP_Encode_Request_Buffer, record, whole.size() + 1, &text), static_cast<int>(whole.size()));
    EXPECT_EQ(text, whole);
    for (std::size_t room = 1; room <= whole.size(); ++room)
        EXPECT_EQ(result_of(SIP_Encode_Request_Buffer, record, room), SIP_ENCODE_NO_ROOM);

    SIP_CODE_MSG untouched = record;
    char none = 'x';
    EXPECT_EQ(SIP_Encode_Request_Buffer(&none, 0, &untouched), SIP_ENCODE_NO_ROOM);
    EXPECT_EQ(none, 'x');
    EXPECT_EQ(SIP_Encode_Request_Buffer(nullptr, 9, &untouched), SIP_ENCODE_NULL_ARGUMENT);
    EXPECT_EQ(SIP_Encode_Response_Buffer(&none, 1, nullptr), SIP_ENCODE_NULL_ARGUMENT);
    EXPECT_EQ(none, '\0');
}

} // namespace
