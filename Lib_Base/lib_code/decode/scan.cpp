// Scanning primitives: brackets, header lookup and the helpers exported to the host.
//
//   "Desk <1>" <sip:1001@10.0.0.1>;tag=a    in brackets: sip:1001@10.0.0.1
#include "decoders.h"
#include "log.h"

namespace sipcode {

namespace {

// t is the text after an opening quote. Returns the text after the closing one, a null text if there is none.
padded_text after_quoted(padded_text t) {
    for (padded_parts cut = cut_at(t, '"'); cut.found; cut = cut_at(cut.after, '"'))
        if (cut.before.empty() || cut.before.back() != '\\')
            return cut.after;
    return {};
}

} // namespace

padded_text Parse_Brackets(padded_text value) {
    for (padded_text rest = value;;) {
        const std::size_t at = find_either(rest, '<', '"');
        if (at >= rest.size())
            return value;
        const padded_text after(rest.data() + at + 1, rest.size() - at - 1);
        if (rest[at] == '<') {
            const padded_parts closed = cut_at(after, '>');
            if (closed.found)
                return closed.before;
            SIPCODE_TRACE(1, "No closing bracket found in '%s'", terminated(value).c_str());
            return value;
        }
        rest = after_quoted(after);
        if (rest.data() == nullptr) {
            if (contains(after, '<'))
                SIPCODE_TRACE(1, "No closing quote found in '%s'", terminated(value).c_str());
            return value;
        }
    }
}

namespace {

// For names that a host asks for. Names of the library are compared by nocase, which is faster.
bool starts_with_name(text line, text name) {
    return line.size() > name.size() && line[name.size()] == ':' &&
           std::equal(name.begin(), name.end(), line.begin(), [](char a, char b) { return lower(a) == lower(b); });
}

} // namespace
} // namespace sipcode

const char *Parse_Header(const SIP_MSG *psip_msg, const char *name) {
    using namespace sipcode;
    if (psip_msg == nullptr || name == nullptr)
        return nullptr;
    const text wanted = name;
    for (int i = 0; i < psip_msg->headers && i < max_lines; ++i) {
        const char *const entry = psip_msg->header[i];
        if (entry == nullptr)
            continue;
        const text line = entry;
        if (starts_with_name(line, wanted))
            return skip_blanks(drop(line, wanted.size() + 1)).data();
    }
    return nullptr;
}

char *Parse_Skip_Blanks(const char *str) {
    while (sipcode::is_blank(*str))
        ++str;
    return const_cast<char *>(str); // the interface takes and returns the caller's own text
}

int Judge_Strlen_Zero(const char *s) { return s == nullptr || *s == '\0'; }

void Copy_String(char *dst, const char *src, size_t size) {
    if (dst == nullptr || src == nullptr || size == 0)
        return;
    const size_t length = strnlen(src, size - 1);
    std::memcpy(dst, src, length);
    dst[length] = '\0';
}
