// Parts of a message. The first character of the input selects the message, the rest is a start line, header lines, the
// value of a header or a body in it. An exported decoder is also called alone, on a message that the host has split.
#include "judge.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

#include <sipcode/decode.h>

namespace {

using fuzz::demand;

#define VIA "Via: SIP/2.0/UDP 192.0.2.9;branch=z9hG4bK1\r\n"
#define DIALOG(method)                                                                                                 \
    "From: <sip:a@192.0.2.9>;tag=f\r\nTo: <sip:b@192.0.2.1>\r\nCall-ID: c\r\nCSeq: 1 " method "\r\n\r\n"
#define REST(method) "\r\n" VIA DIALOG(method)
#define URI " sip:b@192.0.2.1 SIP/2.0\r\n"

struct Family {
    char letter;
    std::string_view before; // the text of the input
    std::string_view after;

    // If the decoder is exported: what it decodes, and how it is called.
    const char *member = nullptr;
    void (*decode)(SIP_CODE_MSG &record, SIP_MSG &split) = nullptr;
};

template <auto Member, auto Parse>
void alone(SIP_CODE_MSG &record, SIP_MSG &split) {
    Parse(&(record.*Member), &split);
}

using Msg = SIP_CODE_MSG;

constexpr Family families[] = {
    {'s', "", REST("OPTIONS")}, // start line
    // any header lines, in a message of each kind
    {'h', "OPTIONS" URI, REST("OPTIONS")},
    {'i', "INVITE" URI, REST("INVITE")},
    {'r', "REGISTER" URI, REST("REGISTER")},
    {'p', "PRACK" URI, REST("PRACK")},
    {'t', "REFER" URI, REST("REFER")},
    {'q', "SIP/2.0 183 Session Progress\r\n", REST("INVITE")},
    // headers whose decoder is exported
    {'v', "OPTIONS" URI "Via: ", "\r\n" DIALOG("OPTIONS"), "via_count",
     [](Msg &record, SIP_MSG &split) { record.via_count = SIP_Decode_Judge_Via_Count(&split); }},
    {'m', "OPTIONS" URI "Contact: ", REST("OPTIONS"), "contact", alone<&Msg::contact, Parse_Contact>},
    {'x', "INVITE" URI "Session-Expires: ", REST("INVITE"), "session_expires",
     alone<&Msg::session_expires, Parse_Session_Expires>},
    {'n', "INVITE" URI "Min-SE: ", REST("INVITE"), "min_se", alone<&Msg::min_se, Parse_Min_Se>},
    {'N', "SIP/2.0 423 Interval Too Brief\r\nMin-Expires: ", REST("REGISTER"), "min_expires",
     alone<&Msg::min_expires, Parse_Min_Expires>},
    {'o', "INVITE" URI "Call-Info: ", REST("INVITE"), "call_info",
     [](Msg &record, SIP_MSG &split) { Parse_Call_Info(&split, &record); }},
    {'a', "REGISTER" URI "Authorization: ", REST("REGISTER"), "author", alone<&Msg::author, Parse_Author>},
    {'A', "INVITE" URI "Proxy-Authorization: ", REST("INVITE"), "author", alone<&Msg::author, Parse_Author>},
    {'g', "SIP/2.0 401 No\r\nWWW-Authenticate: ", REST("REGISTER"), "authen", alone<&Msg::authen, Parse_Authen>},
    {'G', "SIP/2.0 407 No\r\nProxy-Authenticate: ", REST("INVITE"), "authen", alone<&Msg::authen, Parse_Authen>},
    {'j', "SIP/2.0 200 OK\r\nAuthentication-Info: ", REST("REGISTER"), "authen.next_nonce",
     [](Msg &record, SIP_MSG &split) { Parse_Authen_Info(&record.authen.next_nonce, &split); }},
    // bodies
    {'y', "INFO" URI "Content-Type: application/dtmf-relay" REST("INFO") "Signal", "\r\nDuration=160\r\n", "info",
     alone<&Msg::info, Parse_Info>},
    {'Y', "INFO" URI "Content-Type: application/dtmf" REST("INFO"), "", "info", alone<&Msg::info, Parse_Info>},
    {'z', "NOTIFY" URI "Content-Type: application/simple-message-summary" REST("NOTIFY"), "", "message_summary",
     [](Msg &record, SIP_MSG &split) { Parse_Message_Summary(&record.message_summary, split.content); }},
};

const Family &family_of(unsigned char letter) {
    const auto *const found = std::find_if(std::begin(families), std::end(families),
                                           [letter](const Family &family) { return family.letter == letter; });
    return found != std::end(families) ? *found : families[letter % std::size(families)];
}

// ---------------------------------------------------------------------------------------------------------------------
// As a host splits a message: each line a string of its own.

char *next_line(char *&rest) {
    char *const line = rest;
    char *const end = std::strstr(line, "\r\n");
    rest = end == nullptr ? line + std::strlen(line) : end + 2;
    if (end != nullptr)
        *end = '\0';
    return line;
}

// The message is cut in place.
void split_message(char *message, SIP_MSG &split) {
    char *rest = message;
    for (char *line = next_line(rest); *line != '\0'; line = next_line(rest))
        if (split.headers < static_cast<int>(std::size(split.header)))
            split.header[split.headers++] = line;
    std::strncpy(split.content, rest, sizeof split.content - 1);
    while (*rest != '\0' && split.lines < static_cast<int>(std::size(split.line)))
        split.line[split.lines++] = next_line(rest);
}

// Whether a host that splits at each CR LF sees the same lines as the library.
bool is_plain(std::string_view value, std::string_view message) {
    const bool is_one_line = value.find_first_of(std::string_view("\r\n\0", 3)) == value.npos;
    return is_one_line && !value.ends_with(',') && message.size() < sizeof(SIP_MSG::content);
}

// The decoder that is called alone gives what the whole decode gives.
void judge_exported(const Family &family, std::string_view message, const SIP_CODE_MSG &record) {
    static fuzz::Arena text_pages(fuzz::longest_input + 1);
    static fuzz::Arena split_pages(sizeof(SIP_MSG));
    static SIP_CODE_MSG own;
    char *const copy = text_pages.copy_terminated(message);
    auto &split = *new (split_pages.fill(sizeof(SIP_MSG), 0)) SIP_MSG;
    split_message(copy, split);
    std::memset(static_cast<void *>(&own), 0, sizeof own);
    family.decode(own, split);
    text_pages.demand_intact();
    split_pages.demand_intact();
    fuzz::demand_terminated_texts(own);
    fuzz::demand_equal_within(family.member, own, record, "a decoder does the same when it is called alone");
}

// ---------------------------------------------------------------------------------------------------------------------
// The exported functions that read a text.

void judge_texts(std::string_view value) {
    static fuzz::Arena source_pages(fuzz::longest_input + 1);
    static fuzz::Arena target_pages(fuzz::longest_input + 1);
    const fuzz::Arena::Side side = fuzz::side_for(value.size());
    const std::size_t length = strnlen(value.data(), value.size());
    const std::size_t room = value.size() + 1;

    char *const escaped = source_pages.copy_terminated(value, side);
    Uri_Decode(escaped);
    source_pages.demand_intact();
    demand(strnlen(escaped, room) <= length, "a text does not grow when its escapes are decoded");

    char *const text = source_pages.copy_terminated(value, side);
    char *const target = target_pages.fill(room, 0, side);
    const int comma = Del_Quote_Mark(text, target);
    demand(comma >= 0 && static_cast<std::size_t>(comma) <= length, "a place in the text");
    target_pages.fill(room, 0x7E, side);
    Copy_String(target, text, room);
    demand(std::strcmp(target, text) == 0, "a copy with room is whole");
    Copy_String(target, text, 1);
    demand(target[0] == '\0', "a copy without room is empty");
    demand(Parse_Skip_Blanks(text) <= text + length, "blanks end with the text");
    for (const int kind :
         {SIP_Decode_Parse_Method(text), SIP_Decode_Parse_Method_Response(text), SIP_Decode_Parse_Other_Response(text)})
        demand(kind >= -1 && kind < SIP_CODE_METHOD_COUNT, "a kind of message is in the table");
    source_pages.demand_intact();
    target_pages.demand_intact();
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    static char message[fuzz::longest_input];
    if (size == 0)
        return 0;
    const Family &family = family_of(*data);
    const std::size_t room = sizeof message - family.before.size() - family.after.size();
    const std::string_view value(reinterpret_cast<const char *>(data + 1), std::min(size - 1, room));
    char *end = message;
    for (const std::string_view part : {family.before, value, family.after})
        end += part.copy(end, part.size());
    const std::string_view whole(message, static_cast<std::size_t>(end - message));

    const auto [result, record] = fuzz::decode(whole);
    if (result == 1 && family.decode != nullptr && is_plain(value, whole))
        judge_exported(family, whole, record);
    judge_texts(value);
    return 0;
}
