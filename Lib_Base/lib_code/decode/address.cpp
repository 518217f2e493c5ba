// SIP URIs, and From, To, Contact and P-Called-Party-ID (RFC 3261 sections 19.1 and 20; RFC 3966).
//
//   name-addr = [display-name] "<" URI ">" / URI, then *(";" parameter)
//   good:       From: "Desk" <sip:1001@10.0.0.1:5070>;tag=abc    user 1001, addr 10.0.0.1 5070, tag abc
//   bad:        To: <sips:2002@10.0.0.1>                         logged; user 10.0.0.1, flag 2, addr untouched
//
// Differs from the RFC on purpose: the first "tag=" anywhere in the value counts, even inside the brackets. Only From
// removes parameters of the user part.
#include "decoders.h"
#include "log.h"
#include "methods.h"

namespace sipcode {
namespace {

constexpr std::size_t longest_value = 255;
constexpr std::size_t scheme_length = 4; // of "sip:"; every other scheme is assumed to be as long
constexpr char tag_name[] = "tag=";

// Value of a hexadecimal digit, -1 for any other character.
constexpr int hex_digit(char c) {
    const char l = lower(c);
    return is_digit(c) ? c - '0' : l >= 'a' && l <= 'f' ? l - 'a' + 10 : -1;
}

struct hex_number {
    bool found;
    char value;
};

// Reads a number at the start of s as "%2x" does: white space, then at most two characters. The first may be a sign.
hex_number read_two_hex(const char *s) {
    while (is_white_space(*s))
        ++s;
    const bool sign = *s == '-' || *s == '+';
    const int first = hex_digit(sign ? s[1] : s[0]);
    if (first < 0)
        return {false, 0};
    if (sign)
        return {true, static_cast<char>(*s == '-' ? -first : first)};
    const int second = hex_digit(s[1]);
    return {true, static_cast<char>(second < 0 ? first : first * 16 + second)};
}

void decode_escapes(char *s) {
    const char *from = s;
    char *to = s;
    for (; *from != '\0'; ++to) {
        const bool escape = from[0] == '%' && from[1] != '\0' && from[2] != '\0';
        if (const hex_number byte = escape ? read_two_hex(from + 1) : hex_number{}; byte.found) {
            *to = byte.value;
            from += 3;
            if (byte.value == '\0')
                return;
        } else {
            *to = *from++;
        }
    }
    *to = '\0';
}

[[gnu::always_inline]] inline void store_user(const bounded_store &store, char (&user)[32], padded_text value) {
    store.put(user, value);
    if (contains(value, '%'))
        decode_escapes(user);
}

// The URI up to its first ";".
padded_text before_parameters(padded_text uri) { return cut_at(uri, ';').before; }

// The same, after the parameters of the user part ("123;cpc=ordinary@10.0.0.1"). If it has any, the rest is joined in
// scratch.
padded_text without_user_parameters(padded_text uri, char (&scratch)[longest_value + piece_size]) {
    const padded_text name = before_parameters(uri);
    const std::size_t user_length = name.size() == uri.size() ? uri.size() : find(uri, '@');
    if (user_length < name.size() || user_length >= uri.size())
        return name;
    const text host = drop(uri, user_length);
    const std::size_t length = name.size() + host.size();
    std::memcpy(scratch, name.data(), name.size());
    std::memcpy(scratch + name.size(), host.data(), host.size());
    std::memset(scratch + length, 0, piece_size);
    return before_parameters({scratch, length});
}

[[gnu::always_inline]] inline void read_tag(const message &msg, padded_text value, char (&tag)[128]) {
    const auto found = cut_at(value, tag_name);
    if (found.found)
        msg.store.put(tag, cut_at(found.after, ';').before);
}

// Reads a URI. rest is its text after the scheme, up to the first ";".
[[gnu::always_inline]] inline SIP_URI_KIND read_uri(const bounded_store &store, padded_text uri, padded_text rest,
                                                    char (&user)[32], IPV4_ADDRESS &addr) {
    const auto user_host = cut_at(rest, '@');
    constexpr nocase sip = "sip:";
    constexpr nocase tel = "tel:";
    if (starts_nocase(uri, sip)) {
        const auto host_port = cut_at(user_host.found ? user_host.after : rest, ':');
        addr.port = host_port.found ? to_int(host_port.after) : default_port;
        if (user_host.found)
            store_user(store, user, user_host.before);
        store.put(addr.ip, host_port.before);
        return SIP_URI_SIP;
    }
    if (!starts_nocase(uri, tel))
        SIPCODE_TRACE(0, "Decode Uri : '%s' is not a valid SIP uri", terminated(uri).c_str());
    store_user(store, user, user_host.found ? user_host.after : rest);
    return SIP_URI_OTHER;
}

template <class Member>
SIP_URI_KIND read_address(const bounded_store &store, padded_text uri, Member &member) {
    return read_uri(store, uri, drop(uri, scheme_length), member.user, member.addr);
}

// First 255 characters of a value; a missing one reads as an empty text.
padded_text value_or_empty(const message &msg, text value) {
    return value.data() == nullptr ? padded_text("") : msg.store.within(message::padded(value), longest_value);
}

void read_contact(SIP_CONTACT &contact, const bounded_store &store, padded_text value) {
    if (value.data() != nullptr)
        read_address(store, before_parameters(Parse_Brackets(value)), contact);
}

text contact_value(const message &msg) {
    return msg.store.within(msg.value(header::contact, header::compact_contact), longest_value);
}

} // namespace

SIP_URI_KIND Parse_Uri(const bounded_store &store, padded_text uri, char (&user)[32], IPV4_ADDRESS &addr) {
    if (uri.data() == nullptr)
        return SIP_URI_NONE;
    return read_uri(store, uri, cut_at(drop(uri, scheme_length), ';').before, user, addr);
}

void Parse_PCalledPartyID(SIP_FROMTO *callparty, const message &msg) {
    const padded_text value = msg.store.within(message::padded(msg.value(header::p_called_party_id)), longest_value);
    if (value.data() != nullptr)
        read_address(msg.store, before_parameters(Parse_Brackets(value)), *callparty);
}

void Parse_From(SIP_FROMTO *from, const message &msg) {
    const padded_text value = value_or_empty(msg, msg.filled_value(header::from, header::compact_from));
    char scratch[longest_value + piece_size];
    read_address(msg.store, without_user_parameters(Parse_Brackets(value), scratch), *from);
    read_tag(msg, value, from->tag);
}

void Parse_To(SIP_FROMTO *to, const message &msg) {
    const padded_text value = value_or_empty(msg, msg.filled_value(header::to, header::compact_to));
    to->flag = read_address(msg.store, before_parameters(Parse_Brackets(value)), *to);
    read_tag(msg, value, to->tag);
}

void Parse_Contact(SIP_CONTACT *contact, const message &msg) {
    read_contact(*contact, msg.store, message::padded(contact_value(msg)));
}

} // namespace sipcode

void Uri_Decode(char *s) { sipcode::decode_escapes(s); }

void Parse_Contact(SIP_CONTACT *contact, SIP_MSG *psip_msg) {
    using namespace sipcode;
    const text value = contact_value(message(*psip_msg));
    if (value.data() != nullptr)
        read_contact(*contact, bounded_store(), terminated<longest_value>(value).whole());
}
