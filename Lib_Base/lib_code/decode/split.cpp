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

constexpr unsigned case_bit = 'a' - 'A'; // set in every character; what looks alike then is told apart by comparing

constexpr std::size_t slot_of(unsigned factor, const char *name, std::size_t length) {
    const auto letter = [name](std::size_t at) -> unsigned { return static_cast<unsigned char>(name[at]) | case_bit; };
    const unsigned key =
        letter(0) + (letter(length / 2) << 7) + (letter(length - 1) << 14) + (static_cast<unsigned>(length) << 21);
    return (key * factor) >> 24;
}

consteval bool place_names(name_slots &slots) {
    for (std::uint8_t &slot : slots.header_of)
        slot = no_header;
    for (std::size_t i = 0; i < header_count; ++i) {
        const text name = header_names[i];
        std::uint8_t &slot = slots.header_of[slot_of(slots.factor, name.data(), name.size())];
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

// The beginning of a line, with as many readable bytes as its name is compared by.
class line_start {
  public:
    static constexpr std::size_t readable = 32;
    static_assert(longest_name < readable);

    explicit line_start(text line) : bytes(line.data()) {
        if (line.size() >= readable)
            return;
        std::memset(padded, 0, sizeof padded);
        copy_bytes(padded, line.data(), line.size());
        bytes = padded;
    }
    line_start(const line_start &) = delete;
    line_start &operator=(const line_start &) = delete;

    char first_letter() const { return static_cast<char>(bytes[0] | case_bit); }

    bool begins(const nocase &name) const { return name.begins_roomy(bytes); }

    // Characters before the first colon; 0 when there is none, or none near enough for a name.
    std::size_t name_length() const {
        const unsigned colons = matches16(bytes, ':') | matches16(bytes + 16, ':') << 16;
        return colons == 0 ? 0 : static_cast<std::size_t>(std::countr_zero(colons));
    }

    // Number of the header with this name, no_header when it is none of ours.
    std::uint8_t header_of(std::size_t length) const {
        const std::uint8_t candidate = slots.header_of[slot_of(slots.factor, bytes, length)];
        const bool known =
            candidate != no_header && header_names[candidate].size() == length && begins(header_names[candidate]);
        return known ? candidate : no_header;
    }

  private:
    const char *bytes;
    char padded[readable];
};

// ------------------------------------------------------------------------------------------------ cutting into lines

struct received {
    char *begin;
    char *end;
};

// Walks the places where a line may end: every LF, and every CR that does not stand right before one. The text is terminated
// with zeros up to a whole block.
class line_ends {
  public:
    explicit line_ends(received whole) : block(whole.begin), end(whole.end), mask(mask_of(whole.begin)) {}

    // The next place, or the end.
    char *next() {
        while (mask == 0) {
            block += block_size;
            if (block >= end)
                return end;
            mask = mask_of(block);
        }
        char *const at = block + std::countr_zero(mask);
        mask &= mask - 1;
        return at;
    }

  private:
    // A CR at the end of a block counts whatever follows; cut_lines takes it either way.
    static std::uint64_t mask_of(const char *at) {
        const std::uint64_t line_feeds = matches(at, '\n');
        return line_feeds | (matches(at, '\r') & ~(line_feeds >> 1));
    }

    char *block;
    char *end;
    std::uint64_t mask;
};

enum class section { headers, body };

void log_overflow(section part) {
    if (part == section::headers)
        SIPCODE_TRACE(1, "Too many SIP headers. Ignoring");
    else
        SIPCODE_TRACE(1, "Too many SDP lines. Ignoring");
}

// Cuts one section into lines, in place: a line end becomes a terminator unless a comma stands before it, and a CR ends the text
// of its line. The header section ends behind its first empty line. Returns the number of lines and moves begin to where the
// next section starts.
int cut_lines(section part, const received whole, line_ends &ends, char *&begin, char **lines, unsigned *lengths) {
    line_ends walk = ends; // in registers while the section lasts
    int n = 0;
    char *line = begin;
    char *cut = nullptr; // where a CR, no LF behind it, ended the text of this line
    const auto keep_line = [&](char *text_end) {
        lines[n] = line;
        lengths[n] = static_cast<unsigned>((cut == nullptr ? text_end : cut) - line);
        cut = nullptr;
        return lengths[n] != 0;
    };

    for (char *at = walk.next(); at != whole.end; at = walk.next()) {
        if (*at == '\r') {
            if (at != whole.begin && at[-1] == ',')
                continue;
            *at = '\0';
            cut = cut == nullptr ? at : cut;
            continue;
        }
        if (at - whole.begin >= 2 && at[-2] == ',')
            continue;
        char *const text_end = at != whole.begin && at[-1] == '\r' ? at - 1 : at;
        *at = '\0';
        *text_end = '\0';
        const bool filled = keep_line(text_end);
        line = at + 1;
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
    ends = walk;
    begin = whole.end;
    return keep_line(whole.end) ? n + 1 : n;
}

// ------------------------------------------------------------------------------------------------ start line

// Cuts the first token off, in place; the rest is what follows behind its blanks.
char *take_token(char *&rest, char *end) {
    char *const token = rest;
    rest += find_blank({token, static_cast<std::size_t>(end - token)});
    if (rest != end)
        *rest++ = '\0';
    rest = std::find_if_not(rest, end, is_blank);
    return token;
}

// Sets rlPart1 and rlPart2. 0, or -1 when the line is none of the two forms.
int Parse_StartLine_Parts(const message &msg) {
    constexpr nocase protocol = "SIP/2.0";
    SIP_MSG &split = msg.split;
    char *const line = split.header[0];
    char *end = line + msg.header_line(0).size();
    char *rest = std::find_if_not(line, end, is_blank);
    if (rest == end)
        return msg.refuse(SIP_DECODE_NO_START_LINE, "", line);
    split.rlPart1 = take_token(rest, end);
    if (rest == end)
        return msg.refuse(SIP_DECODE_NO_START_LINE, "", line);
    while (is_blank(end[-1]))
        *--end = '\0';

    if (equals_nocase(split.rlPart1, protocol)) {
        split.rlPart2 = rest;
        return end - rest < 3 ? msg.refuse(SIP_DECODE_BAD_STATUS, "", rest) : 0;
    }
    if (*rest == '<') {
        SIPCODE_TRACE(0, "bogus uri in <> %s", rest);
        Parse_Brackets(rest); // the message is refused all the same: only its log line counts
        return msg.refuse(SIP_DECODE_BAD_URI, "", rest);
    }
    split.rlPart2 = take_token(rest, end);
    if (!equals_nocase({rest, static_cast<std::size_t>(end - rest)}, protocol)) {
        SIPCODE_TRACE(0, "Bad request protocol %s", rest);
        return msg.refuse(SIP_DECODE_BAD_PROTOCOL, "", rest);
    }
    return 0;
}

} // namespace

// ---------------------------------------------------------------------------------------------------- split message

int SIP_Decode_Parse_Msg(message &msg, std::size_t length) {
    SIP_MSG &split = msg.split;
    std::memset(split.data + length, 0, block_size - length % block_size); // the rest of the last block
    const received whole{split.data, split.data + length};
    line_ends ends(whole);
    char *begin = whole.begin;
    split.headers = msg.header_line_count =
        cut_lines(section::headers, whole, ends, begin, split.header, msg.header_length);

    // The body is kept whole before it is cut.
    msg.body_begin = begin;
    msg.content_length = static_cast<std::size_t>(whole.end - begin);
    std::memcpy(split.content, begin, msg.content_length + 1);
    split.lines = msg.body_line_count = cut_lines(section::body, whole, ends, begin, split.line, msg.body_length);

    if (Parse_StartLine_Parts(msg) < 0)
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
    constexpr nocase via = "Via";
    constexpr nocase compact_via = "v:";
    constexpr nocase record_route = "Record-Route";
    for (int i = 0; i < header_line_count; ++i) {
        const text line = header_line(i);
        const line_start start(line);
        const char first = start.first_letter();
        if (first == 'v' && (start.begins(via) || start.begins(compact_via)))
            vias |= line_set{1} << i;
        else if (first == 'r' && start.begins(record_route))
            record_routes |= line_set{1} << i;

        const std::size_t length = start.name_length();
        const std::uint8_t name = length == 0 ? no_header : start.header_of(length);
        if (name == no_header || first_line[name] != 0)
            continue;
        first_line[name] = static_cast<std::uint8_t>(i + 1);
        value_begin[i] = static_cast<unsigned>(skip_blanks(drop(length + 1, line)).data() - line.data());
    }
}

} // namespace sipcode
