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
        return block + first_bit(mask);
    }

    // Steps over the place that was found.
    void pass() { mask &= mask - 1; }

    bool is_end(const char *at) const { return at >= end; }

    // The byte before the text is readable too.
    bool follows_comma(const char *at) const { return at[-1] == ','; }

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

} // namespace

// -------------------------------------------------------------------------------------------------------- start line

// Sets rlPart1 and rlPart2, terminated in place. Returns 0, or -1 if the line has neither form.
int Parse_StartLine_Parts(message &msg) {
    SIP_MSG &split = msg.split();
    const auto [outcome, is_response, first, second] = cut_start_line(message::padded(msg.header_line(0)));
    const auto terminate = [&split](text part) {
        char *const begin = split.data + (part.data() - split.data);
        begin[part.size()] = '\0';
        return begin;
    };
    if (outcome == SIP_DECODE_NO_START_LINE)
        return msg.store.refuse(outcome, "", second.data());
    split.rlPart1 = terminate(first);
    msg.end_start_line(first.end());
    split.rlPart2 = terminate(second);
    if (outcome == SIP_DECODE_BAD_URI) {
        SIPCODE_TRACE(0, "bogus uri in <> %s", split.rlPart2);
        Parse_Brackets(second); // for its log line
    } else if (outcome == SIP_DECODE_BAD_PROTOCOL) {
        SIPCODE_TRACE(0, "Bad request protocol %s", split.rlPart2);
    }
    return outcome == SIP_DECODE_DONE ? 0 : msg.store.refuse(outcome, "", second.data());
}

// ---------------------------------------------------------------------------------------------------- split message

template <bool Padded>
[[gnu::always_inline]] inline void message::index_header(std::size_t i, text line) {
    constexpr nocase via = "Via";
    constexpr nocase record_route = "Record-Route";
    const line_start start(line, Padded);
    const header_name *const known = start.header();
    if (known == nullptr) { // may still count as Via or Record-Route, by how it begins
        vias |= line_set{start.begins(via)} << i;
        record_routes |= line_set{start.begins(record_route)} << i;
    } else if (std::uint8_t &first = first_line[static_cast<std::size_t>(known->id)]; first == 0) {
        first = static_cast<std::uint8_t>(i + 1);
        set_first_value(*known, line);
    } else {
        count_line(known->id, line_set{1} << i);
    }
}

inline void message::set_first_value(const header_name &known, text line) {
    const char *value = line.data() + known.name.size();
    while (is_blank(*value))
        ++value;
    first_value[static_cast<std::size_t>(known.id)] = {value, static_cast<std::size_t>(line.end() - value)};
}

void message::count_line(header name, line_set line) {
    if (name == header::via || name == header::compact_via)
        vias |= line;
    else if (name == header::record_route)
        record_routes |= line;
}

void message::count_first_lines() {
    for (const header counted : {header::via, header::compact_via, header::record_route})
        if (const int line = first_line[static_cast<std::size_t>(counted)]; line != 0)
            count_line(counted, line_set{1} << (line - 1));
}

void message::end_start_line(const char *end) {
    const padded_text line(split_message.header[0], static_cast<std::size_t>(end - split_message.header[0]));
    header_length[0] = static_cast<unsigned>(line.size());
    if (!contains(line, ':'))
        return;
    if (const header_name *const known = line_start(line, true).header(); known != nullptr)
        set_first_value(*known, line);
}

// Cuts a text into lines, in place: the end of a line's text becomes a terminator.
class splitter {
  public:
    splitter(message &target, std::size_t length)
        : msg(target), split(target.split()), rest(split.data), end(split.data + length), finder(split.data, end) {}

    // The header section ends after its first empty line.
    template <section Part>
    int cut_lines() {
        line_end_finder places = finder; // in registers while the section lasts
        std::size_t count = 0;
        for (char *line = rest;;) {
            const auto [text_end, next] = find_line_end(split.data, places);
            const auto length = static_cast<std::size_t>(text_end - line);
            line[length] = '\0';
            if (next == nullptr) {
                if (length != 0)
                    take_line<Part>(count++, line, length);
                rest = end;
                finder = places;
                return static_cast<int>(count);
            }
            char *const next_line = line + (next - line);
            // A word is compared together with the byte after its terminator. A LF that opens the finder's next block
            // must not end a line either.
            next_line[-1] = '\0';
            if (Part == section::headers && length == 0) {
                rest = next_line;
                finder = places;
                return static_cast<int>(count);
            }
            // The last entry is for a line that ends the text; no other one that late counts.
            if (count != max_lines - 1)
                take_line<Part>(count++, line, length);
            else
                log_overflow(Part);
            line = next_line;
        }
    }

    text uncut() const { return {rest, static_cast<std::size_t>(end - rest)}; }

  private:
    template <section Part>
    void take_line(std::size_t i, char *line, std::size_t length) {
        if constexpr (Part == section::headers) {
            split.header[i] = line;
            msg.header_length[i] = static_cast<unsigned>(length);
            msg.index_header<true>(i, {line, length});
        } else {
            split.line[i] = line;
            msg.body_length[i] = static_cast<unsigned>(length);
            msg.session_line_sets.add(line, line_set{1} << i);
        }
    }

    message &msg;
    SIP_MSG &split;
    char *rest;
    char *end;
    line_end_finder finder;
};

int SIP_Decode_Parse_Msg(message &msg, std::size_t length) {
    SIP_MSG &split = msg.split();
    // Up to two blocks are read past the text. If it is long, they are members that are set below.
    static_assert(offsetof(SIP_MSG, data) + sizeof SIP_MSG::data + 2 * block_size <= sizeof(SIP_MSG));
    std::memset(reinterpret_cast<char *>(&split) + offsetof(SIP_MSG, data) + length, 0, 2 * block_size);
    split.rlPart1 = split.rlPart2 = nullptr;
    split.len = split.headers = split.lines = split.method = 0;
    std::end(split.content)[-1] = '\0'; // no comma before the text
    split.header[0] = split.data;       // even if it has no line
    msg.header_length[0] = 0;

    splitter sections(msg, length);
    split.headers = msg.header_line_count = sections.cut_lines<section::headers>();
    // A copy of the whole body is kept before it is cut.
    const text body = sections.uncut();
    msg.store.body_begin = body.data();
    msg.content_length = body.size();
    // With its terminator and the padding after it, of which a word may be read.
    std::memcpy(split.content, body.data(), std::min(body.size() + sizeof(std::uint64_t), sizeof split.content));
    if (!body.empty())
        split.lines = msg.body_line_count = sections.cut_lines<section::body>();

    if (Parse_StartLine_Parts(msg) < 0)
        return -1;
    msg.count_first_lines();
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
    for (std::size_t i = 0; i < static_cast<std::size_t>(header_line_count); ++i)
        index_header<false>(i, header_line(i));
    count_first_lines();
}

void message::trim_body() {
    const std::size_t kept = Parse_Trim_Blanks(body()).size();
    std::memset(split_message.content + kept, 0, content_length - kept);
    content_length = kept;
}

} // namespace sipcode
