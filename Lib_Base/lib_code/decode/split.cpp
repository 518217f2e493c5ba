// Received text -> start line, header lines, body lines; the lookups over them.
//
//   start-line  = Method SP Request-URI SP "SIP/2.0"  /  "SIP/2.0" SP Status-Code SP Reason-Phrase
//   header-line = name ":" *blank value            no blank between the name and the colon
//
// Differs from RFC 3261 section 7.3.1 on purpose: lines that begin with a blank are lines of their own, and only a line
// that ends in a comma continues on the next. LF alone ends a line as CR LF does.
#include <algorithm>

#include "decoders.h"
#include "line_rules.h"
#include "log.h"
#include "message.h"

namespace sipcode {
namespace {

// ------------------------------------------------------------------------------------------------ cutting into lines

struct received {
    char *begin;
    char *end;
};

// Finds the bytes from 0 to CR by one comparison. They include every line end and the terminator, and others of them
// are rare. The whole block that holds the terminator must be readable.
class line_end_finder {
  public:
    explicit line_end_finder(const char *begin, const char *text_end)
        : block(begin), end(text_end), mask(matches_up_to(begin, '\r')) {}

    // The next place. There always is one: the caller never passes the terminator.
    const char *find() {
        while (mask == 0) {
            block += block_size;
            mask = matches_up_to(block, '\r');
        }
        return block + std::countr_zero(mask);
    }

    // Steps over the place that was found.
    void pass() { mask &= mask - 1; }

    bool is_end(const char *at) const { return at >= end; }

    bool is_cr_lf(const char *at) const {
        static constexpr char line_end[2] = {'\r', '\n'};
        return load<std::uint16_t>(at) == load<std::uint16_t>(line_end);
    }

  private:
    const char *block;
    const char *end;
    std::uint64_t mask;
};

enum class section { headers, body };

void log_overflow(section part) {
    if (part == section::headers)
        SIPCODE_TRACE(1, "Too many SIP headers. Ignoring");
    else
        SIPCODE_TRACE(1, "Too many SDP lines. Ignoring");
}

// Cuts one section into lines, in place: the end of a line's text becomes a terminator. The header section ends after
// its first empty line. Returns the number of lines and moves begin to where the next section starts.
template <section Part>
int cut_lines(const received whole, line_end_finder &finder, char *&begin, char **const lines, unsigned *lengths) {
    line_end_finder places = finder; // in registers while the section lasts
    int count = 0;
    for (char *line = begin;;) {
        const auto [text_end, next] = find_line_end(whole.begin, line, places);
        const bool is_empty = text_end == line;
        lines[count] = line;
        lengths[count] = static_cast<unsigned>(text_end - line);
        line[text_end - line] = '\0';
        if (next == nullptr) {
            begin = whole.end;
            finder = places;
            return count + !is_empty;
        }
        line += next - line;
        line[-1] = '\0'; // the finder then skips it, and a word is compared together with the byte after its terminator
        if (Part == section::headers && is_empty) {
            begin = line;
            finder = places;
            return count;
        }
        // Later lines replace each other in the last entry. If an empty line follows, the entry is lost.
        if (count != max_lines - 1)
            ++count;
        else
            log_overflow(Part);
    }
}

// ------------------------------------------------------------------------------------------------ start line

// Sets rlPart1 and rlPart2, terminated in place. Returns 0, or -1 if the line has neither form.
int Parse_StartLine_Parts(message &msg) {
    SIP_MSG &split = msg.split();
    const auto [outcome, is_response, first, second] = cut_start_line(msg.header_line(0));
    const auto terminate = [&split](text part) {
        char *const begin = split.data + (part.data() - split.data);
        begin[part.size()] = '\0';
        return begin;
    };
    if (outcome == SIP_DECODE_NO_START_LINE)
        return msg.store.refuse(outcome, "", second.data());
    split.rlPart1 = terminate(first);
    split.rlPart2 = terminate(second);
    if (outcome == SIP_DECODE_BAD_URI) {
        SIPCODE_TRACE(0, "bogus uri in <> %s", split.rlPart2);
        Parse_Brackets(message::padded(second)); // for its log line
    } else if (outcome == SIP_DECODE_BAD_PROTOCOL) {
        SIPCODE_TRACE(0, "Bad request protocol %s", split.rlPart2);
    }
    return outcome == SIP_DECODE_DONE ? 0 : msg.store.refuse(outcome, "", second.data());
}

} // namespace

// ---------------------------------------------------------------------------------------------------- split message

template <bool Padded>
void message::index_headers() {
    constexpr nocase via = "Via";
    constexpr nocase record_route = "Record-Route";
    for (int i = 0; i < header_line_count; ++i) {
        const text line = header_line(i);
        const line_start start(line, Padded);
        const std::size_t length = start.name_length();
        const std::uint8_t name = length == 0 ? no_header : start.header_of(length);
        if (name == no_header) { // may still count as Via or Record-Route, by how it begins
            vias |= line_set{start.begins(via)} << i;
            record_routes |= line_set{start.begins(record_route)} << i;
        } else if (first_line[name] != 0) {
            count_line(static_cast<header>(name), line_set{1} << i);
        } else {
            first_line[name] = static_cast<std::uint8_t>(i + 1);
            const char *value = line.data() + length + 1;
            while (is_blank(*value))
                ++value;
            first_value[name] = {value, static_cast<std::size_t>(line.end() - value)};
        }
    }
    for (const header counted : {header::via, header::compact_via, header::record_route})
        if (const int line = first_line[static_cast<std::size_t>(counted)]; line != 0)
            count_line(counted, line_set{1} << (line - 1));
}

void message::count_line(header name, line_set line) {
    if (name == header::via || name == header::compact_via)
        vias |= line;
    else if (name == header::record_route)
        record_routes |= line;
}

int SIP_Decode_Parse_Msg(message &msg, std::size_t length) {
    SIP_MSG &split = msg.split();
    const received whole{split.data, split.data + length};
    // Clears the rest of the last block and, if there is room, one block more: both are read past the text.
    std::memset(whole.end, 0, std::min(2 * block_size - length % block_size, sizeof split.data - length));
    // So are the members after the text: they pad the last line of the longest text.
    static_assert(offsetof(SIP_MSG, flags) - offsetof(SIP_MSG, rlPart1) >= line_start::length);
    split.rlPart1 = split.rlPart2 = nullptr;
    split.len = split.headers = split.lines = split.method = 0;
    line_end_finder finder(whole.begin, whole.end);
    char *begin = whole.begin;
    split.headers = msg.header_line_count =
        cut_lines<section::headers>(whole, finder, begin, split.header, msg.header_length);

    // A copy of the whole body is kept before it is cut.
    msg.store.body_begin = begin;
    msg.content_length = static_cast<std::size_t>(whole.end - begin);
    std::memcpy(split.content, begin, msg.content_length + 1);
    split.lines = msg.body_line_count = cut_lines<section::body>(whole, finder, begin, split.line, msg.body_length);

    if (Parse_StartLine_Parts(msg) < 0)
        return -1;
    msg.header_length[0] = static_cast<unsigned>(std::strlen(split.header[0]));
    msg.index_headers<true>();
    return 0;
}

namespace {

// Measures the lines of a message that the host split. Returns how many count.
int measure_lines(char *const *lines, int count, unsigned *lengths) {
    const int taken = std::clamp(count, 0, max_lines);
    for (int i = 0; i < taken; ++i)
        lengths[i] = lines[i] == nullptr ? 0 : static_cast<unsigned>(std::strlen(lines[i]));
    return taken;
}

} // namespace

message::message(SIP_MSG &host_split)
    : split_message(host_split), header_line_count(measure_lines(host_split.header, host_split.headers, header_length)),
      body_line_count(measure_lines(host_split.line, host_split.lines, body_length)),
      content_length(strnlen(host_split.content, sizeof host_split.content)) {
    index_headers<false>();
}

void message::trim_body() {
    const std::size_t kept = Parse_Trim_Blanks(body()).size();
    std::memset(split_message.content + kept, 0, content_length - kept);
    content_length = kept;
}

} // namespace sipcode
