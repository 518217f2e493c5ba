// Identifiers and their texts on the wire, both ways.
//
//   "INVITE" -> 5    "180 Ringing" -> 17    "200 anything" -> 20    "302 Moved Temporarily" -> 0
#include "methods.h"

#include <algorithm>

#include "decode.h"
#include "host.h"
#include "slots.h"

extern "C" {

constexpr SIP_METHOD_TEXT decode_methods[SIP_CODE_METHOD_COUNT] = {
    {SIP_REQUEST_MSG_UNKNOWN, "-UNKNOWN-"},
    {SIP_REQUEST_MSG_RESPONSE, "SIP/2.0"},
    {SIP_REQUEST_MSG_REGISTER, "REGISTER"},
    {SIP_REQUEST_MSG_OPTION, "OPTIONS"},
    {SIP_REQUEST_MSG_NOTIFY, "NOTIFY"},
    {SIP_REQUEST_MSG_INVITE, "INVITE"},
    {SIP_REQUEST_MSG_ACK, "ACK"},
    {SIP_REQUEST_MSG_PRACK, "PRACK"},
    {SIP_REQUEST_MSG_BYE, "BYE"},
    {SIP_REQUEST_MSG_REFER, "REFER"},
    {SIP_REQUEST_MSG_SUBCRIBE, "SUBSCRIBE"},
    {SIP_REQUEST_MSG_MESSAGE, "MESSAGE"},
    {SIP_REQUEST_MSG_UPDATE, "UPDATE"},
    {SIP_REQUEST_MSG_INFO, "INFO"},
    {SIP_REQUEST_MSG_CANCEL, "CANCEL"},
    {SIP_REQUEST_MSG_PUBLISH, "PUBLISH"},
    {SIP_RESPONSE_MSG_100_TRY, "100 Trying"},
    {SIP_RESPONSE_MSG_180_RING, "180 Ringing"},
    {SIP_RESPONSE_MSG_183_RING, "183 Session Progress"},
    {SIP_RESPONSE_MSG_182_RING, "182 Queued"},
    {SIP_RESPONSE_MSG_200_OK, "200 OK"},
    {SIP_RESPONSE_MSG_202_OK, "202 Accepted"},
    {SIP_RESPONSE_MSG_401_UNAUTHORIZED, "401 Unauthorized"},
    {SIP_RESPONSE_MSG_403_FORBIDDEN, "403 Forbidden"},
    {SIP_RESPONSE_MSG_404_NOT_FONUD, "404 Not Found"},
    {SIP_RESPONSE_MSG_407_PROXY_AUTHENTICATION_REQUIRED, "407 Proxy Authentication Required"},
    {SIP_RESPONSE_MSG_408_REQUEST_TIMEROUT, "408 Request Timeout"},
    {SIP_RESPONSE_MSG_480_TEMPORARILY_UNAVAILABLE, "480 Temporarily Unavailable"},
    {SIP_RESPONSE_MSG_481_CALL_TRANSACTION_DOES_NOT_EXIST, "481 Call/Transaction Does Not Exist"},
    {SIP_RESPONSE_MSG_483_TOO_MANY_HOPS, "483 Too Many Hops"},
    {SIP_RESPONSE_MSG_486_BUSY_HERE, "486 Busy Here"},
    {SIP_RESPONSE_MSG_487_REQUEST_TERMINATED, "487 Request Terminated"},
    {SIP_RESPONSE_MSG_488_NOT_ACCEPTABLE_HERE, "488 Not Acceptable Here"},
    {SIP_RESPONSE_MSG_491_REQUEST_PENDING, "491 Request Pending"},
    {SIP_RESPONSE_MSG_493_UNDECIPHERABLE, "493 Undecipherable"},
    {SIP_RESPONSE_MSG_500_SERVER_INTERNAL_ERROR, "500 Server Internal Error"},
    {SIP_RESPONSE_MSG_501_NOT_IMPLEMENTED, "501 Not Implemented"},
    {SIP_RESPONSE_MSG_504_SERVER_TIME_OUT, "504 Gateway Time-out"},
    {SIP_RESPONSE_MSG_505_VERSION_NOT_SUPPORTED, "505 Version Not Supported"},
    {SIP_RESPONSE_MSG_513_MESSAGE_TOO_LARGE, "513 Message Too Large"},
    {SIP_RESPONSE_MSG_600_BUSY_EVERYWHERE, "600 Busy Everywhere"},
    {SIP_RESPONSE_MSG_603_DECLINE, "603 Decline"},
    {SIP_RESPONSE_MSG_604_DOES_NOT_NOT_EXIST_ANYWHERE, "604 Does Not Exist Anywhere"},
    {SIP_RESPONSE_MSG_181, "181 Call Is Being Forwarded"},
    {SIP_RESPONSE_MSG_400_BAD_REQUEST, "400 Bad Request"},
    {SIP_RESPONSE_MSG_503, "503 Service Unavailable"},
    {SIP_RESPONSE_MSG_423_INTERVAL_TOO_BRIEF, "423 Interval Too Brief"},
    {SIP_RESPONSE_MSG_422_SESSION_INVERVAL_TOO_SMALL, "422 Session Interval Too Small"},
    {SIP_RESPONSE_MSG_405_METHOD_NOT_ALLOWED, "405 Method Not Allowed"},
};

// G722 shows as "97": hosts rely on it when they read their traces.
constexpr SIP_CODEC_TEXT code_methods[SIP_CODE_CODEC_COUNT] = {
    {""},    {"G711_A"},  {"G711_U"}, {"G729"},  {"G723"}, {"101"},
    {"GSM"}, {"G726-32"}, {"97"},     {"SPEEX"}, {"ILBC"}, {"DVI4"},
};
}

namespace sipcode {
namespace {

consteval bool rows_are_indexed_by_id() {
    for (int row = 0; row < SIP_CODE_METHOD_COUNT; ++row)
        if (decode_methods[row].id != row)
            return false;
    return true;
}
static_assert(rows_are_indexed_by_id());

consteval bool rows_can_be_compared() {
    for (const SIP_METHOD_TEXT &row : decode_methods)
        for (const char c : text(row.text))
            if (c >= '@' && (lower(c) < 'a' || lower(c) > 'z'))
                return false;
    return true;
}
static_assert(rows_can_be_compared());

// The texts are pointers, which need relocation. Their lengths do not.
constexpr auto row_lengths = [] {
    std::array<std::uint8_t, SIP_CODE_METHOD_COUNT> lengths{};
    for (std::size_t row = 0; row < lengths.size(); ++row)
        lengths[row] = static_cast<std::uint8_t>(text(decode_methods[row].text).size());
    return lengths;
}();

text row_text(std::size_t row) { return {decode_methods[row].text, row_lengths[row]}; }

// The first eight characters of a row, compared ignoring case.
struct row_beginning {
    std::uint64_t characters;
    std::uint64_t compared; // every bit but those in which the cases of a letter differ

    bool matches(std::uint64_t beginning, std::size_t longest) const {
        return ((beginning ^ characters) & compared & first_bytes(longest)) == 0;
    }
};

constexpr auto row_beginnings = [] {
    std::array<row_beginning, SIP_CODE_METHOD_COUNT> beginnings{};
    for (std::size_t row = 0; row < beginnings.size(); ++row) {
        const std::size_t length = std::min<std::size_t>(row_lengths[row], 8);
        const std::uint64_t characters = word_of(decode_methods[row].text, length);
        beginnings[row] = {characters, first_bytes(length) & ~case_bits_of(characters)};
    }
    return beginnings;
}();

// The first three characters in lower case, which differ in every row. Setting the case bits may make other texts
// alike; the comparison that follows tells them apart.
constexpr std::uint32_t beginning_key(std::uint64_t beginning) {
    constexpr std::uint64_t case_bits = 0x202020;
    return static_cast<std::uint32_t>((beginning & first_bytes(status_code_length)) | case_bits);
}

constexpr key_slots row_slots([] {
    std::array<std::uint32_t, SIP_CODE_METHOD_COUNT> keys{};
    for (std::size_t row = 0; row < keys.size(); ++row)
        keys[row] = beginning_key(row_beginnings[row].characters);
    return keys;
}());

// The word, followed by a blank or the end: "INVITEX" is not INVITE.
bool SIP_Decode_Parse_Method_Match(std::size_t row, text name, std::uint64_t beginning) {
    const std::size_t length = row_lengths[row];
    return row_beginnings[row].matches(beginning, 8) && (length <= 8 || starts_nocase(name, row_text(row))) &&
           (name.size() == length || is_blank(name[length]));
}

// Only the status code counts, not the reason phrase.
bool SIP_Decode_Parse_Method_Match_Response(std::size_t row, text, std::uint64_t beginning) {
    return row_beginnings[row].matches(beginning, status_code_length);
}

// The row that matches; row 0 if none does, -1 for an empty text.
template <class Match>
int find_row(text msg, Match match) {
    if (msg.empty())
        return -1;
    if (msg.size() < status_code_length)
        return SIP_REQUEST_MSG_UNKNOWN;
    const std::uint64_t beginning = load_word(msg.data(), msg.size());
    const std::uint8_t row = row_slots.candidate(beginning_key(beginning));
    return match(row, msg, beginning) ? row : int{SIP_REQUEST_MSG_UNKNOWN};
}

text or_empty(const char *msg) { return msg == nullptr ? text() : text(msg); }

} // namespace

int SIP_Decode_Parse_Method(text msg) { return find_row(msg, SIP_Decode_Parse_Method_Match); }

int SIP_Decode_Parse_Method_Response(text msg) { return find_row(msg, SIP_Decode_Parse_Method_Match_Response); }

int SIP_Decode_Parse_Other_Response(text msg) {
    if (msg.empty())
        return SIP_REQUEST_MSG_UNKNOWN;
    char code[8];
    store(code, at_most(msg, status_code_length));
    const int status = Str_Atoi(code);
    return status >= 400 && status <= 699 ? SIP_RESPONSE_MSG_480_TEMPORARILY_UNAVAILABLE : SIP_REQUEST_MSG_UNKNOWN;
}

text method_text(int id) {
    const bool known = id >= 0 && id < SIP_CODE_METHOD_COUNT;
    return row_text(static_cast<std::size_t>(known ? id : SIP_REQUEST_MSG_UNKNOWN));
}

} // namespace sipcode

int SIP_Decode_Parse_Method(const char *msg) { return sipcode::SIP_Decode_Parse_Method(sipcode::or_empty(msg)); }

int SIP_Decode_Parse_Method_Response(const char *msg) {
    return sipcode::SIP_Decode_Parse_Method_Response(sipcode::or_empty(msg));
}

int SIP_Decode_Parse_Other_Response(const char *msg) {
    return sipcode::SIP_Decode_Parse_Other_Response(sipcode::or_empty(msg));
}
