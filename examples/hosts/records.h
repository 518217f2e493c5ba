// Small helpers around the codec's records.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <sipcode/code.h>

// Copies a text into a member, cut to what the member holds.
template <std::size_t N>
void set_text(char (&member)[N], std::string_view text) {
    member[text.copy(member, N - 1)] = '\0';
}

// "180 Ringing", "INVITE"; "unknown" for what the codec does not know.
std::string_view name_of(int method);

// A request whose method the codec knows and whose CSeq agrees with it.
bool is_request(const SIP_CODE_MSG &message);
bool is_response(const SIP_CODE_MSG &message);

// The status code of a response: 180.
int status_code(const SIP_CODE_MSG &response);

// True when a list of option tags, as in Supported, names this one.
bool lists(std::string_view tags, std::string_view wanted);

// True when every option tag of wanted is in tags.
bool lists_all(std::string_view tags, std::string_view wanted);

// What a peer wrote must not reach a terminal as a control sequence.
std::string printable(std::string_view text);
