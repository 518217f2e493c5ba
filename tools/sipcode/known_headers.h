// The headers that the codec reads, and which lines its record shows to be read, without a trial.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "message_lines.h"
#include "safe.h"

struct KnownHeader {
    const char *name;
    std::size_t length;
    int member; // offset of one that only this header fills; -1 if there is none
};

// What is known of a header line from its name and the record.
struct Knowledge {
    const KnownHeader *header = nullptr; // null if the codec reads no header with this name, or not this line
    bool is_shown = false;               // to be read, by the member of the header
};

// One for each line. The record is that of the message.
std::vector<Knowledge> knowledge_of(std::string_view message, std::span<const HeaderLine> lines,
                                    const SIP_CODE_MSG &record);

// How many characters of a value the member of its header holds, if it holds them as they are; otherwise 0.
std::size_t kept_verbatim(std::string_view value, const KnownHeader &header, const SIP_CODE_MSG &record);
