// Received text -> start line, header lines, body lines; the lookups over them.
//
//   start-line  = Method SP Request-URI SP "SIP/2.0"  /  "SIP/2.0" SP Status-Code SP Reason-Phrase
//   header-line = name ":" *blank value            no blank between the name and the colon
//
// Differs from RFC 3261 section 7.3.1 on purpose: lines that begin with a blank are lines of their own, and only a line
// that ends in a comma goes on in the next one. LF alone ends a line as CR LF does.
#include <algorithm>

#include "decoders.h"
#include "log.h"
#include "message.h"

namespace sipcode {
namespace {

// ------------------------------------------------------------------------------------------------ names of headers

constexpr nocase header_names[header_count] = {
    "Alert-Info",
    "Authentication-Info",
    "Authorization",
    "Call-ID",
    "Call-Info",
    "Contact",
    "Content-Type",
    "CSeq",
    "Date",
    "Event",
    "Expires",
    "From",
    "History-Info",
    "Korvadex",
    "Korvadex-Extern",
    "Max-Forwards",
    "Min-Expires",
    "Min-SE",
    "P-Called-Party-ID",
    "Proxy-Authenticate",
    "Proxy-Authorization",
    "RAck",
    "Record-Route",
    "Refer-To",
    "Referred-By",
    "Replaces",
    "Require",
    "RSeq",
    "Service-Route",
    "Session-Expires",
    "Subscription-State",
    "Supported",
    "To",
    "User-Agent",
    "Via",
    "WWW-Authenticate",
    "i",
    "m",
    "c",
    "f",
    "x",
    "k",
    "t",
    "v",
};

constexpr std::size_t longest_name =
    std::max_element(std::begin(header_names), std::end(header_names), [](const nocase &a, const nocase &b) {
        return a.size() < b.size();
    })->size();

// A name finds its header in one step: no two names share a slot, which measuring the names when compiling ensures.
constexpr std::size_t slot_count = 256;
constexpr std::uint8_t no_header = 0xFF;

struct name_slots {
    unsigned factor = 0;
    std::uint8_t header_of[slot_count] = {};
};

constexpr std::size_t slot_of(unsigned factor, text name) {
    const auto letter = [name](std::size_t at) -> unsigned { return static_cast<unsigned char>(lower(name[at])); };
    const auto length = static_cast<unsigned>(name.size());
    const unsigned key = letter(0) + (letter(length / 2) << 7) + (letter(length - 1) << 14) + (length << 21);
    return (key * factor) >> 24;
}

consteval bool place_names(name_slots &slots) {
    for (std::uint8_t &slot : slots.header_of)
        slot = no_header;
    for (std::size_t i = 0; i < header_count; ++i) {
        std::uint8_t &slot = slots.header_of[slot_of(slots.factor, header_names[i])];
        if (slot != no_header)
            return false;
        slot = static_cast<std::uint8_t>(i);
    }
    return true;
}

consteval name_slots find_slots() {
    name_slots slots;
    for (slots.factor = 0x9E3779B1U; !place_names(slots);)
        slots.factor += 0x6D2B79F6U;
    return slots;
}
constexpr name_slots slots = find_slots();

// Number of the header whose name begins the line, no_header when it is none of ours.
std::uint8_t header_of_line(text line) {
    const parts name_value = cut_at(':', at_most(longest_name + 1, line));
    const text name = name_value.before;
    if (!name_value.found || name.empty())
        return no_header;
    const std::uint8_t candidate = slots.header_of[slot_of(slots.factor, name)];
    return candidate != no_header && equals_nocase(name, header_names[candidate]) ? candidate : no_header;
}

// ------------------------------------------------------------------------------------------------ cutting into lines

struct received {
    char *begin;
    char *end;
};

using line_ends = byte_walk<'\n', '\r'>;

enum class section { headers, body };

void log_overflow(section part) {
    if (part == section::headers)
        SIPCODE_TRACE(1, "Too many SIP headers. Ignoring");
    else
        SIPCODE_TRACE(1, "Too many SDP lines. Ignoring");
}

// Cuts one section into lines, in place: a line end becomes a terminator unless a comma stands before it. The header section
// ends behind its first empty line. Returns the number of lines and moves begin to where the next section starts.
int cut_lines(section part, const received whole, line_ends &ends, char *&begin, char **lines, unsigned *lengths) {
    line_ends walk = ends; // in registers while the section lasts
    int n = 0;
    char *line = begin;
    char *line_end = nullptr; // the first terminator written into this line
    const auto keep_line = [&](const char *last) {
        lines[n] = line;
        lengths[n] = static_cast<unsigned>((line_end != nullptr ? line_end : last) - line);
        return lengths[n] != 0;
    };

    for (char *at = walk.next(); at != whole.end; at = walk.next()) {
        const bool ends_line = *at == '\n';
        const std::ptrdiff_t distance = ends_line ? 2 : 1;
        if (at - whole.begin >= distance && at[-distance] == ',')
            continue;
        *at = '\0';
        if (line_end == nullptr)
            line_end = at;
        if (!ends_line)
            continue;
        const bool filled = keep_line(at);
        line = at + 1;
        line_end = nullptr;
        if (part == section::headers && !filled) {
            ends = walk;
            begin = line;
            return n;
        }
        // Later lines take the last entry in turn; the last of them is lost when an empty line follows.
        if (n < max_lines - 1)
            ++n;
        else
            log_overflow(part);
    }
    begin = whole.end;
    return keep_line(whole.end) ? n + 1 : n;
}

// ------------------------------------------------------------------------------------------------ start line

// Cuts the first token off, in place; the rest is what follows behind its blanks.
char *take_token(char *&rest, char *end) {
    char *const token = rest;
    rest = std::find_if(rest, end, is_blank);
    if (rest != end)
        *rest++ = '\0';
    rest = std::find_if_not(rest, end, is_blank);
    return token;
}

// Sets rlPart1 and rlPart2. 0, or -1 when the line is none of the two forms.
int Parse_StartLine_Parts(SIP_MSG &split, text start_line) {
    constexpr nocase protocol = "SIP/2.0";
    char *const line = split.header[0];
    char *end = line + start_line.size();
    char *rest = std::find_if_not(line, end, is_blank);
    if (rest == end)
        return -1;
    split.rlPart1 = take_token(rest, end);
    if (rest == end)
        return -1;
    while (is_blank(end[-1]))
        *--end = '\0';

    if (equals_nocase(split.rlPart1, protocol)) {
        split.rlPart2 = rest;
        return end - rest < 3 ? -1 : 0;
    }
    if (*rest == '<') {
        SIPCODE_TRACE(0, "bogus uri in <> %s", rest);
        Parse_Brackets(rest); // the message is refused all the same: only its log line counts
        return -1;
    }
    split.rlPart2 = take_token(rest, end);
    if (!equals_nocase({rest, static_cast<std::size_t>(end - rest)}, protocol)) {
        SIPCODE_TRACE(0, "Bad request protocol %s", rest);
        return -1;
    }
    return 0;
}

} // namespace

// ---------------------------------------------------------------------------------------------------- split message

int SIP_Decode_Parse_Msg(message &msg) {
    SIP_MSG &split = msg.split;
    const std::size_t length = std::strlen(split.data);
    std::memset(split.data + length, 0, block_size - length % block_size); // the rest of the last block
    const received whole{split.data, split.data + length};
    line_ends ends(whole.begin, whole.end);
    char *begin = whole.begin;
    split.headers = msg.header_line_count =
        cut_lines(section::headers, whole, ends, begin, split.header, msg.header_length);

    // The body is kept whole before it is cut.
    msg.content_length = static_cast<std::size_t>(whole.end - begin);
    std::memcpy(split.content, begin, msg.content_length + 1);
    split.lines = msg.body_line_count = cut_lines(section::body, whole, ends, begin, split.line, msg.body_length);

    if (Parse_StartLine_Parts(split, msg.header_line(0)) < 0)
        return -1;
    msg.header_length[0] = static_cast<unsigned>(std::strlen(split.header[0]));
    msg.index_headers();
    return 0;
}

namespace {

// Takes over the lines of a message that the host split.
int measure_lines(char *const *lines, int count, unsigned *lengths) {
    const int taken = std::clamp(count, 0, max_lines);
    for (int i = 0; i < taken; ++i)
        lengths[i] = lines[i] == nullptr ? 0 : static_cast<unsigned>(std::strlen(lines[i]));
    return taken;
}

} // namespace

message::message(SIP_MSG &host_split)
    : split(host_split), header_line_count(measure_lines(split.header, split.headers, header_length)),
      body_line_count(measure_lines(split.line, split.lines, body_length)),
      content_length(strnlen(split.content, sizeof split.content)) {
    index_headers();
}

void message::trim_body() {
    const std::size_t kept = trim_end(body()).size();
    std::memset(split.content + kept, 0, content_length - kept);
    content_length = kept;
}

void message::index_headers() {
    for (int i = 0; i < header_line_count; ++i) {
        const std::uint8_t name = header_of_line(header_line(i));
        if (name != no_header && first_line[name] == 0)
            first_line[name] = static_cast<std::uint8_t>(i + 1);
    }
}

} // namespace sipcode
