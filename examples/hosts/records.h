// Small helpers around the codec's records.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <sipcode/code.h>

#include "codec.h"

// Copies a text into a member. Cuts it if it is too long.
template <std::size_t N>
void set_text(char (&member)[N], std::string_view text) {
    member[text.copy(member, N - 1)] = '\0';
}

// "180 Ringing", "INVITE"; "unknown" for an identifier outside the table.
std::string_view name_of(int method);

// Whether this identifier is that of a request.
bool is_method(int identifier);

// "INVITE", "180 Ringing"; "302" if the codec has no identifier for a status.
std::string title(const Received &message);

// Whether a list of option tags, as in Supported, holds this one.
bool lists(std::string_view tags, std::string_view wanted);

// Whether every option tag of wanted is in tags.
bool lists_all(std::string_view tags, std::string_view wanted);

// Text of a peer without its control characters, which must not reach a terminal.
std::string printable(std::string_view text);
