// The split message as the decoders see it: lines as slices, and headers found by name without a search.
#pragma once

#include <cstddef>
#include <cstdint>

#include "decode.h"
#include "header_names.h"
#include "line_rules.h"
#include "store.h"
#include "text.h"

namespace sipcode {

// Bit i is line i.
using line_set = std::uint64_t;

// Takes the first line out of a set that is not empty.
inline std::size_t take_first(line_set &lines) {
    const auto first = first_bit(lines);
    lines &= lines - 1;
    return first;
}

// Two characters as load_word reads them.
constexpr std::uint64_t type_mark(char letter, char mark) {
    const char both[] = {letter, mark};
    return word_of(both, sizeof both);
}

// The body lines of each type that a session description is read from. The type is a letter, in either case, and "=".
struct session_lines {
    line_set connection = 0; // c=
    line_set media = 0;      // m=
    line_set attributes = 0; // a=
    line_set codecs = 0;     // a= of which the value may begin with "rtpmap:"

    // Of an empty line, its terminator and one byte more are read.
    void add(const char *line, line_set this_line) {
        switch (load_word(line, 2) | type_mark(case_bit, '\0')) {
        case type_mark('a', '='):
            attributes |= this_line;
            if (line[2] == 'r' || is_blank(line[2]))
                codecs |= this_line;
            break;
        case type_mark('m', '='):
            media |= this_line;
            break;
        case type_mark('c', '='):
            connection |= this_line;
            break;
        default:
            break;
        }
    }
};

// A message that SIP_Decode_Parse_Msg split, or one that the host did.
class message {
  public:
    // For decoding a message that is still to be split. The report may be null.
    message(SIP_MSG &storage, const SIP_CODE_MSG &record, SIP_DECODE_REPORT *decode_report)
        : store(storage, record, decode_report), split_message(storage) {}

    // For a message that the host split.
    explicit message(SIP_MSG &host_split);

    message(const message &) = delete;
    message &operator=(const message &) = delete;

    int header_lines() const { return header_line_count; }
    text header_line(std::size_t index) const { return {split_message.header[index], header_length[index]}; }

    int body_lines() const { return body_line_count; }
    text body_line(std::size_t index) const { return {split_message.line[index], body_length[index]}; }

    // Value of the first header line with this name, after the colon and leading blanks; a null slice if there is none.
    // It is followed by a terminator.
    text value(header name) const {
        const auto number = static_cast<std::size_t>(name);
        return first_line[number] == 0 ? text() : text(first_value[number].begin, first_value[number].size);
    }

    // A slice of a message that SIP_Decode_Parse_Msg split: other members of SIP_MSG pad it. The lines of a host-split
    // message have no padding and are copied first.
    static padded_text padded(text slice) {
        static_assert(offsetof(SIP_MSG, content) + sizeof SIP_MSG::content == offsetof(SIP_MSG, data));
        static_assert(offsetof(SIP_MSG, data) + sizeof SIP_MSG::data + piece_size <= sizeof(SIP_MSG));
        return padded_text(slice);
    }

    // The same, by the compact form if no line has the full name.
    text value(header name, header compact) const {
        const text full = value(name);
        return full.data() != nullptr ? full : value(compact);
    }

    // The same, by the compact form also if the value under the full name is empty.
    text filled_value(header name, header compact) const {
        const text full = value(name);
        return full.empty() ? value(compact) : full;
    }

    // Of a message that SIP_Decode_Parse_Msg split.
    const session_lines &session() const { return session_line_sets; }

    // The first token of the start line.
    text first_token() const {
        return {split_message.rlPart1, static_cast<std::size_t>(header_line(0).end() - split_message.rlPart1)};
    }

    // Lines that begin with these names. The name may go on, as in "Viable:".
    line_set via_lines() const { return vias; }
    line_set record_route_lines() const { return record_routes; }

    // The body as received.
    text body() const { return {split_message.content, content_length}; }

    // Removes trailing blanks from the body, in place.
    void trim_body();

    SIP_MSG &split() { return split_message; }
    const SIP_MSG &split() const { return split_message; }

    bounded_store store;

  private:
    friend class splitter;
    friend int Parse_StartLine_Parts(message &msg);
    friend int SIP_Decode_Parse_Msg(message &msg, std::size_t length);

    template <bool Padded>
    void index_header(std::size_t i, text line);
    void set_first_value(const header_name &known, text line);
    void count_line(header name, line_set line);
    void count_first_lines();

    // The start line counts as a header line up to the end of its first token.
    void end_start_line(const char *end);

    SIP_MSG &split_message;
    // Only the entries of counted lines are ever set: a decode does not pay for those that it does not use.
    unsigned header_length[max_lines];
    unsigned body_length[max_lines];
    struct {
        const char *begin;
        std::size_t size;
    } first_value[header_count];                // where first_line names a line
    std::uint8_t first_line[header_count] = {}; // 1 + the first line of a header, 0 if it has none
    line_set vias = 0;
    line_set record_routes = 0;
    session_lines session_line_sets;
    int header_line_count = 0;
    int body_line_count = 0;
    std::size_t content_length = 0;
};

// Splits the text in msg.split().data, terminated and length bytes long. Returns 0 if its start line is acceptable,
// else -1.
int SIP_Decode_Parse_Msg(message &msg, std::size_t length);

} // namespace sipcode
