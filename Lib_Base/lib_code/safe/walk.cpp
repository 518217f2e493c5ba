// Reading what the record leaves out: header lines, list items, the start line and the body of a received text, by the
// rules of the decoder. Nothing is copied or changed.
#include <algorithm>

#include "decode/line_rules.h"
#include "safe.h"
#include "text.h"

namespace sipcode {
namespace {

constexpr int refused_argument = SIP_DECODE_NULL_ARGUMENT;
constexpr int last_counted_line = max_lines - 2; // the start line is line 0; see find_counted_line

// The text that the decoder reads, unless a NUL ends it.
text decodable(const char *data, std::size_t length) { return at_most({data, length}, SIP_LONGEST_MESSAGE); }

// Finds the bytes from 0 to CR, as the splitter does. A NUL is the end of the text. The places of one block are kept
// from line to line. Nothing past the text is read.
class line_end_finder {
  public:
    line_end_finder(text searched, const char *line, SIP_PLACES &kept) : whole(searched), places(&kept) {
        const auto at = static_cast<std::size_t>(line - whole.data());
        if (at - places->block >= block_size || at == 0)
            search(at);
        mask = places->mask & ~std::uint64_t{0} << (at - places->block);
    }

    const char *find() {
        while (mask == 0) {
            if (whole.size() - places->block <= block_size)
                return whole.data() + whole.size();
            search(places->block + block_size);
            mask = places->mask;
        }
        return whole.data() + places->block + first_bit(mask);
    }
    void pass() { mask &= mask - 1; }

    bool is_end(const char *at) const { return at == whole.data() + whole.size() || *at == '\0'; }
    bool is_cr_lf(const char *at) const {
        return whole.data() + whole.size() - at >= 2 && at[0] == '\r' && at[1] == '\n';
    }
    bool follows_comma(const char *at) const { return at != whole.data() && at[-1] == ','; }

  private:
    void search(std::size_t block) {
        const text rest = drop(whole, block);
        places->block = block;
        places->mask = rest.size() >= block_size ? matches_up_to(rest.data(), '\r')
                                                 : matches_up_to_of_rest(rest.data(), rest.size(), '\r');
    }

    text whole;
    SIP_PLACES *places;
    std::uint64_t mask;
};

SIP_SLICE slice_of(text part, const char *data) {
    return {part.data() == nullptr ? 0 : static_cast<std::size_t>(part.data() - data), part.size()};
}

text text_of(const char *data, SIP_SLICE slice) { return {data + slice.at, slice.length}; }

struct line {
    text content;
    std::size_t next; // where the next line begins
    bool is_ended;    // by a line end, not by the end of the text
};

line find_line(text whole, std::size_t at, SIP_PLACES &kept) {
    const char *const begin = whole.data() + at;
    line_end_finder places(whole, begin, kept);
    const auto [text_end, next] = find_line_end(whole.data(), places);
    const text content(begin, static_cast<std::size_t>(text_end - begin));
    const bool is_ended = next != nullptr;
    return {content, is_ended ? static_cast<std::size_t>(next - whole.data()) : whole.size(), is_ended};
}

// The line at `at`, by its number in the message. The decoder has room for 63 lines. A later one counts only if it is
// the last of a text without an empty line, and has no line end itself.
line find_counted_line(text whole, std::size_t at, int number, SIP_PLACES &kept) {
    line found = find_line(whole, at, kept);
    while (number > last_counted_line && !found.content.empty() && found.is_ended)
        found = find_line(whole, found.next, kept);
    return found;
}

// "Name: value": the value without the blanks before it. A line without a colon has no name.
void read_header(text content, const char *data, SIP_HEADER_WALK &walk) {
    const parts cut = cut_at(content, ':');
    walk.name = slice_of(cut.found ? cut.before : text(content.data(), 0), data);
    walk.value = slice_of(cut.found ? skip_blanks(cut.after) : content, data);
}

int walk_headers(const char *data, std::size_t length, SIP_HEADER_WALK &walk) {
    const text whole = decodable(data, length);
    if (walk.next == 0) {
        const line start = find_line(whole, 0, walk.places);
        walk.next = start.content.empty() ? whole.size() : start.next;
    }
    if (walk.next >= whole.size())
        return 0;
    const line found = find_counted_line(whole, walk.next, walk.line + 1, walk.places);
    walk.next = found.content.empty() ? whole.size() : found.next;
    if (found.content.empty())
        return 0;
    ++walk.line;
    read_header(found.content, data, walk);
    return 1;
}

struct compact_form {
    char letter;
    char name[20];
};
constexpr compact_form compact_forms[] = {
    {'a', "Accept-Contact"},
    {'b', "Referred-By"},
    {'c', "Content-Type"},
    {'d', "Request-Disposition"},
    {'e', "Content-Encoding"},
    {'f', "From"},
    {'i', "Call-ID"},
    {'j', "Reject-Contact"},
    {'k', "Supported"},
    {'l', "Content-Length"},
    {'m', "Contact"},
    {'n', "Identity-Info"},
    {'o', "Event"},
    {'r', "Refer-To"},
    {'s', "Subject"},
    {'t', "To"},
    {'u', "Allow-Events"},
    {'v', "Via"},
    {'x', "Session-Expires"},
    {'y', "Identity"},
};

bool equal_ignoring_case(text a, text b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return lower(x) == lower(y); });
}

bool is_header(text found, text name, SIP_NAME_FORMS forms) {
    if (equal_ignoring_case(found, name))
        return true;
    if (forms != SIP_NAME_ANY_FORM || found.size() != 1)
        return false;
    const char letter = lower(found.front());
    return std::any_of(std::begin(compact_forms), std::end(compact_forms), [=](const compact_form &known) {
        return known.letter == letter && equal_ignoring_case(known.name, name);
    });
}

// Where a list item ends: at the first comma outside quotes and angle brackets.
std::size_t item_length(text list) {
    bool quoted = false;
    bool bracketed = false;
    for (std::size_t at = 0; at < list.size(); ++at) {
        const char c = list[at];
        if (quoted && c == '\\')
            ++at;
        else if (c == '"')
            quoted = !quoted;
        else if (!quoted && (c == '<' || c == '>'))
            bracketed = c == '<';
        else if (c == ',' && !quoted && !bracketed)
            return at;
    }
    return list.size();
}

// Takes the next item that is not empty out of the rest of a line. Returns false at its end.
bool take_item(const char *data, SIP_LIST_WALK &walk) {
    while (walk.rest.length != 0) {
        const text rest = text_of(data, walk.rest);
        const text whole = at_most(rest, item_length(rest));
        walk.rest = slice_of(drop(rest, whole.size() + 1), data);
        if (const text item = Parse_Trim_Blanks(skip_blanks(whole)); !item.empty()) {
            walk.item = slice_of(item, data);
            return true;
        }
    }
    return false;
}

int walk_list(const char *data, std::size_t length, text name, SIP_NAME_FORMS forms, SIP_LIST_WALK &walk) {
    while (!take_item(data, walk)) {
        if (walk_headers(data, length, walk.header) == 0)
            return 0;
        if (is_header(text_of(data, walk.header.name), name, forms))
            walk.rest = walk.header.value;
    }
    return 1;
}

// The status code at the beginning of a status; 0 if it is none.
int status_code(text status) {
    constexpr std::size_t digits = 3;
    const text code = at_most(status, digits);
    const bool is_code =
        std::all_of(code.begin(), code.end(), is_digit) && (status.size() == digits || is_blank(status[digits]));
    return is_code ? to_int(code) : 0;
}

SIP_DECODE_OUTCOME read_start_line(const char *data, std::size_t length, SIP_START_LINE &start) {
    start = {};
    SIP_PLACES places{};
    const line found = find_line(decodable(data, length), 0, places);
    const auto [outcome, is_response, first, second] = cut_start_line(found.content);
    if (outcome != SIP_DECODE_DONE)
        return outcome;
    if (is_response) {
        start.status = status_code(second);
        start.reason = slice_of(skip_blanks(Parse_Skip_Nonblanks(second)), data);
    } else {
        start.method = slice_of(first, data);
        start.uri = slice_of(second, data);
    }
    return outcome;
}

SIP_SLICE find_body(const char *data, std::size_t length) {
    const text whole = decodable(data, length);
    SIP_PLACES places{};
    std::size_t at = 0;
    for (bool in_headers = true; in_headers && at < whole.size();) {
        const line found = find_line(whole, at, places);
        in_headers = !found.content.empty();
        at = found.is_ended ? found.next : whole.size();
    }
    const text rest = drop(whole, at);
    return slice_of(at_most(rest, find_byte(rest.data(), rest.size(), '\0')), data);
}

} // namespace
} // namespace sipcode

int SIP_Walk_Headers(const char *data, size_t length, SIP_HEADER_WALK *walk) {
    return data == nullptr || walk == nullptr ? sipcode::refused_argument : sipcode::walk_headers(data, length, *walk);
}

int SIP_Is_Header(const char *data, const SIP_HEADER_WALK *walk, const char *name, SIP_NAME_FORMS forms) {
    if (data == nullptr || walk == nullptr || name == nullptr)
        return sipcode::refused_argument;
    return sipcode::is_header(sipcode::text_of(data, walk->name), name, forms);
}

int SIP_Find_Header(const char *data, size_t length, const char *name, SIP_NAME_FORMS forms, int number,
                    SIP_SLICE *value) {
    if (data == nullptr || name == nullptr || value == nullptr)
        return sipcode::refused_argument;
    *value = {};
    SIP_HEADER_WALK walk{};
    while (sipcode::walk_headers(data, length, walk) == 1) {
        if (!sipcode::is_header(sipcode::text_of(data, walk.name), name, forms) || number-- > 0)
            continue;
        *value = walk.value;
        return 1;
    }
    return 0;
}

int SIP_Walk_List(const char *data, size_t length, const char *name, SIP_NAME_FORMS forms, SIP_LIST_WALK *walk) {
    return data == nullptr || name == nullptr || walk == nullptr ? sipcode::refused_argument
                                                                 : sipcode::walk_list(data, length, name, forms, *walk);
}

int SIP_Read_Start_Line(const char *data, size_t length, SIP_START_LINE *start) {
    return data == nullptr || start == nullptr ? sipcode::refused_argument
                                               : sipcode::read_start_line(data, length, *start);
}

int SIP_Find_Body(const char *data, size_t length, SIP_SLICE *body) {
    if (data == nullptr || body == nullptr)
        return sipcode::refused_argument;
    *body = sipcode::find_body(data, length);
    return body->length != 0;
}
