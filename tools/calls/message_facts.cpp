// Reads what tells calls apart, see message_facts.h.
#include "message_facts.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "safe.h"

namespace {

constexpr const char *other_parties[] = {"P-Called-Party-ID", "History-Info"};

std::string_view slice_of(std::string_view text, const SIP_SLICE &slice) { return text.substr(slice.at, slice.length); }

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string_view trim_end(std::string_view text) { return text.substr(0, text.find_last_not_of(" \t\r\n") + 1); }

// Changes no small letter, and no other character into one except for capital letters.
char small(char c) { return static_cast<char>(c | 0x20); }

// The name is in small letters.
bool begins_nocase(std::string_view text, std::string_view name) {
    return text.size() >= name.size() &&
           std::equal(name.begin(), name.end(), text.begin(), [](char letter, char c) { return letter == small(c); });
}

// Value of a parameter after the URI: "1" of "<sip:a@b;tag=2>;tag=1".
std::string_view parameter_of(std::string_view value, std::string_view name) {
    const std::size_t bracket = value.rfind('>');
    std::string_view rest = bracket == std::string_view::npos ? value : value.substr(bracket + 1);
    for (std::size_t at = rest.find(';'); at != std::string_view::npos; at = rest.find(';')) {
        rest.remove_prefix(at + 1);
        const auto *const begin = std::find_if_not(rest.begin(), rest.end(), is_blank);
        rest.remove_prefix(static_cast<std::size_t>(begin - rest.begin()));
        if (!begins_nocase(rest, name) || rest.substr(name.size(), 1) != "=")
            continue;
        rest.remove_prefix(name.size() + 1);
        const auto *const end =
            std::find_if(rest.begin(), rest.end(), [](char c) { return c == ';' || c == ',' || is_blank(c); });
        return rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
    }
    return {};
}

// "102 INVITE"
bool read_cseq(std::string_view value, MessageFacts &facts) {
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), facts.cseq);
    if (error != std::errc())
        return false;
    if (facts.is_request())
        return true;
    const std::string_view rest = value.substr(static_cast<std::size_t>(end - value.data()));
    facts.method = trim_end(rest.substr(std::min(rest.find_first_not_of(" \t"), rest.size())));
    return true;
}

class Headers {
  public:
    explicit Headers(std::string_view message) : message_(message) {}

    bool next() { return SIP_Walk_Headers(message_.data(), message_.size(), &walk_) == 1; }

    // First letter of the name, small; most headers are none of those that are wanted.
    char letter() const { return walk_.name.length == 0 ? '\0' : small(message_[walk_.name.at]); }
    bool is(const char *name) const { return SIP_Is_Header(message_.data(), &walk_, name, SIP_NAME_ANY_FORM) == 1; }
    std::string_view value() const { return trim_end(slice_of(message_, walk_.value)); }

  private:
    std::string_view message_;
    SIP_HEADER_WALK walk_{};
};

} // namespace

bool may_have_session(std::string_view message) { return message.find("\nv=") != std::string_view::npos; }

bool read_facts(std::string_view message, MessageFacts &facts) {
    facts = {};
    SIP_START_LINE start;
    if (SIP_Read_Start_Line(message.data(), message.size(), &start) != SIP_DECODE_DONE)
        return false;
    facts.status = start.status;
    facts.reason = slice_of(message, start.reason);
    facts.method = slice_of(message, start.method);
    facts.uri = slice_of(message, start.uri);
    if (facts.status == 0 && facts.method.empty())
        return false; // a response without a number

    bool has_cseq = false;
    const auto take = [](std::string_view &member, std::string_view value) {
        if (member.empty())
            member = value;
    };
    for (Headers headers(message); headers.next();) {
        switch (headers.letter()) {
        case 'c':
            if (!has_cseq && headers.is("CSeq"))
                has_cseq = read_cseq(headers.value(), facts);
            else if (headers.is("Call-ID"))
                take(facts.call_id, headers.value());
            break;
        case 'i':
            if (headers.is("Call-ID"))
                take(facts.call_id, headers.value());
            break;
        case 'f':
            if (headers.is("From"))
                take(facts.from, headers.value());
            break;
        case 't':
            if (headers.is("To"))
                take(facts.to, headers.value());
            break;
        case 'v':
            if (facts.branch.empty() && headers.is("Via"))
                facts.branch = parameter_of(headers.value(), "branch");
            break;
        case 'h':
        case 'p':
            facts.names_others |= std::any_of(std::begin(other_parties), std::end(other_parties),
                                              [&](const char *name) { return headers.is(name); });
            break;
        default:
            break;
        }
    }
    facts.from_tag = parameter_of(facts.from, "tag");
    facts.to_tag = parameter_of(facts.to, "tag");
    return has_cseq && !facts.call_id.empty();
}

std::string_view user_of(std::string_view value) {
    const std::size_t after_name = value.starts_with('"') ? value.find('"', 1) : 0; // a name may hold a bracket too
    const std::size_t bracket = value.find('<', after_name);
    std::string_view uri = bracket == std::string_view::npos ? value : value.substr(bracket + 1);
    uri.remove_prefix(std::min(uri.find(':') + 1, uri.size())); // npos + 1 is 0
    const std::string_view until_host = uri.substr(0, uri.find_first_of("@>"));
    return until_host.substr(0, until_host.find_first_of(";: \t"));
}

std::string other_users(std::string_view message) {
    std::string users;
    for (const char *name : other_parties) {
        SIP_LIST_WALK walk{};
        while (SIP_Walk_List(message.data(), message.size(), name, SIP_NAME_ANY_FORM, &walk) == 1)
            users.append(users.empty() ? "" : " ").append(user_of(slice_of(message, walk.item)));
    }
    return users;
}
