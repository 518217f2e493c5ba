// Where a message ends in a stream of bytes.
//
//   header-section = 1*line empty-line     lines as the splitter cuts them: LF ends one unless a comma precedes it
//   length-line    = ("Content-Length" / "l") *blank ":" *blank 1*DIGIT *blank [CR] LF
//
//   Content-Length: 12      a body of 12 bytes
//   l : 012                 the same length, so one message may have both
//   Content-Length: 12;x    refused: nobody knows where the message ends and what follows it
//
// A message is refused if other readers might read another length. A length line that a comma joins to the line before
// it is a line of its own to readers that join none. A CR in the middle of such a line ends the line for some readers.
#include <climits>

#include "safe.h"
#include "text.h"

namespace sipcode {
namespace {

constexpr std::size_t longest_message = SIP_LONGEST_MESSAGE;
constexpr std::size_t largest_length = INT_MAX;

// Line ends before a message. A CR alone is not counted, since its LF may still arrive.
std::size_t keep_alive_length(text data) {
    std::size_t length = 0;
    for (text rest = data; rest.starts_with('\n') || rest.starts_with("\r\n"); rest = drop(data, length))
        length += rest.front() == '\n' ? 1 : 2;
    return length;
}

// As in the splitter: the comma is two bytes before LF, whether or not the byte between is CR.
bool is_after_comma(text data, std::size_t line_feed) { return line_feed >= 2 && data[line_feed - 2] == ','; }

// Length of the header section with its empty line; 0 if there is no empty line. A CR cuts the text of a line, so a
// line that begins with CR is empty.
std::size_t header_section_length(text data) {
    std::size_t line = 0;
    for (std::size_t at = 0;; ++at) {
        at += find_byte(data.data() + at, data.size() - at, '\n');
        if (at == data.size())
            return 0;
        if (is_after_comma(data, at))
            continue;
        if (at == line || data[line] == '\r')
            return at + 1;
        line = at + 1;
    }
}

// The value of a line that states the length, up to the LF; a null text for any other line.
text length_value(text line) {
    constexpr text full = "Content-Length";
    constexpr text compact = "l";
    const std::size_t name = starts_nocase(line, full)      ? full.size()
                             : starts_nocase(line, compact) ? compact.size()
                                                            : 0;
    const text after_name = skip_blanks(drop(line, name));
    return name != 0 && after_name.starts_with(':') ? drop(after_name, 1) : text();
}

// Returns false if the value is not a number from 0 to largest_length.
bool read_length(text value, std::size_t &length) {
    const text digits = Parse_Trim_Blanks(skip_blanks(value));
    length = 0;
    for (const char c : digits) {
        if (!is_digit(c))
            return false;
        const auto digit = static_cast<std::size_t>(c - '0');
        if (length > (largest_length - digit) / 10)
            return false;
        length = length * 10 + digit;
    }
    return !digits.empty();
}

// Reads the lengths that the header lines state. Returns SIP_FRAME_COMPLETE if there is one and all agree.
int read_stated_length(text headers, std::size_t &stated) {
    bool found = false;
    while (!headers.empty()) {
        const parts cut = cut_at(headers, '\n');
        const text line = cut.before;
        headers = cut.after;
        const text value = length_value(line);
        if (value.data() == nullptr)
            continue;
        std::size_t length = 0;
        if (find_byte(line.data(), line.size(), '\r') + 1 < line.size() || !read_length(value, length))
            return SIP_FRAME_BAD_LENGTH;
        if (found && length != stated)
            return SIP_FRAME_DIFFERENT_LENGTHS;
        stated = length;
        found = true;
    }
    return found ? SIP_FRAME_COMPLETE : SIP_FRAME_NO_LENGTH;
}

int frame(text data, std::size_t &message_length) {
    message_length = keep_alive_length(data);
    if (message_length != 0)
        return SIP_FRAME_KEEP_ALIVE;

    const text decodable = at_most(data, longest_message);
    const std::size_t headers_length = header_section_length(decodable);
    const text headers = at_most(decodable, headers_length != 0 ? headers_length : decodable.size());
    if (contains(headers, '\0'))
        return SIP_FRAME_NUL;
    if (headers_length == 0)
        return decodable.size() < longest_message ? SIP_FRAME_MORE : SIP_FRAME_LONG_HEADERS;

    std::size_t body_length = 0;
    if (const int outcome = read_stated_length(headers, body_length); outcome != SIP_FRAME_COMPLETE)
        return outcome;
    message_length = headers_length + body_length;
    if (message_length > longest_message)
        return SIP_FRAME_LONG_MESSAGE;
    const text body = at_most(drop(data, headers_length), body_length);
    if (contains(body, '\0'))
        return SIP_FRAME_NUL;
    if (body.size() == body_length)
        return SIP_FRAME_COMPLETE;
    message_length = 0;
    return SIP_FRAME_MORE;
}

} // namespace
} // namespace sipcode

int SIP_Frame_Stream(const char *data, size_t length, size_t *message_length) {
    if (message_length == nullptr)
        return SIP_FRAME_NULL_ARGUMENT;
    *message_length = 0;
    return data == nullptr ? SIP_FRAME_NULL_ARGUMENT : sipcode::frame({data, length}, *message_length);
}
