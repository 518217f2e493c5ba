// Digest authentication (RFC 2617): credentials, challenges and the next nonce.
//
//   Authorization: Digest username="bob",realm="a.b",nonce="84a",uri="sip:a.b",response="e6f9",algorithm=MD5
//       author: use 1, author_type 100, the five texts without their quotes, algorithm MD5, stale -1
//   WWW-Authenticate: Digest realm="a.b",nonce="84a",stale=FALSE,algorithm=MD5,qop="auth,auth-int"
//       authen: use 1, authen_type 102, ..., qop "auth,auth-int"
//   bad: Authorization: Digest            use and author_type are set, the texts are empty
//
// Differs from the RFC on purpose: a parameter name counts at any position. A value without quotes runs to the end of
// the header.
#include <algorithm>

#include "decoders.h"
#include "host.h"
#include "writer.h"

namespace sipcode {
namespace {

constexpr std::size_t longest_credentials = 511;
constexpr std::size_t longest_challenge = 255;
constexpr std::size_t longest_info = 511;

// A parameter's value without its double quotes.
class quoted_value {
  public:
    // Reads up to the second double quote of t, or to its end if there are fewer.
    explicit quoted_value(padded_text t) {
        const auto opened = cut_at(t, '"');
        before = opened.before;
        const std::size_t mark = find_either(opened.after, '"', ','); // nearly always the second quote
        const bool is_comma = mark < opened.after.size() && opened.after[mark] == ',';
        const std::size_t quote = is_comma ? mark + find(drop(opened.after, mark), '"') : mark;
        between = at_most(opened.after, quote);
        if (quote >= opened.after.size())
            return;
        const auto before_comma = cut_at(before, ',');
        width = before_comma.before.size() + (before_comma.found ? 0 : mark);
    }

    // The text on both sides of the first quote, joined in scratch if both exist. Nearly always only the second does.
    text value(char (&scratch)[longest_credentials + 1]) const {
        if (before.empty() || between.empty())
            return before.empty() ? between : before;
        writer joined(scratch, sizeof scratch);
        joined.append(before);
        joined.append(between);
        return {scratch, joined.length()};
    }

    // How far the scan skips: to the first comma of the value, or over the whole value without one. 0 if it was not
    // quoted.
    std::size_t skip() const { return width; }

  private:
    padded_text before;
    text between;
    std::size_t width = 0;
};

// Stores the first item of a comma list. Only its first 31 characters are searched; if they are all commas, the list is
// stored as it is.
void store_algorithm(const bounded_store &store, char (&algorithm)[16], text list) {
    constexpr std::size_t longest_list = 31;
    text items = at_most(list, longest_list);
    while (!items.empty() && items.front() == ',')
        items.remove_prefix(1);
    const std::size_t seen = cut_at(items, ',').before.size();
    if (seen == 0)
        return store.put(algorithm, list);
    const text whole = cut_at(drop(list, static_cast<std::size_t>(items.data() - list.data())), ',').before;
    store.put(algorithm, whole, std::min(seen, sizeof algorithm - 1));
}

// 0 if the text begins with the name.
int Strncmp_Nocase(padded_text str1, const nocase &str2) { return starts_nocase(str1, str2) ? 0 : 1; }

// A parameter name with its "=", the only one in it. Some end like a longer name, which a letter before them gives away.
class parameter_name {
  public:
    static constexpr std::size_t shortest = 4;

    consteval parameter_name(const char *characters, char letter_of_other = '\0')
        : name(characters), ending(ending_of(text(name).end())), other(letter_of_other) {}

    // Whether it ends before `end`, and not before `from`. There are at least as many characters as the shortest name
    // has.
    bool ends_at(const char *end, const char *from, const char *header) const {
        if (ending_of(end) != ending || end - from < static_cast<std::ptrdiff_t>(name.size()))
            return false;
        const char *const begin = end - name.size();
        return name.begins(begin) && (begin == header || lower(begin[-1]) != other);
    }

  private:
    // The last two letters differ in the names of a header.
    static constexpr std::uint64_t ending_of(const char *end) {
        constexpr std::uint64_t case_bits = 0x2020;
        return (std::is_constant_evaluated() ? word_of(end - 3, 2) : load_word(end - 3, 2)) | case_bits;
    }

    nocase name;
    std::uint64_t ending;
    char other;
};

// Stores stale and returns the length of its value. Any other text, a quoted value included, sets nothing and returns
// 0.
std::size_t read_stale(padded_text value, int &stale) {
    constexpr nocase no = "FALSE";
    constexpr nocase yes = "TRUE";
    const bool is_yes = Strncmp_Nocase(value, yes) == 0;
    if (!is_yes && Strncmp_Nocase(value, no) != 0)
        return 0;
    stale = is_yes;
    return is_yes ? yes.size() : no.size();
}

template <class Record>
struct text_parameter {
    parameter_name name;
    void (*store_value)(const bounded_store &store, Record &record, text value);
};

constexpr text_parameter<SIP_AUTHOR> credential_parameters[] = {
    {"username=",
     [](const bounded_store &store, SIP_AUTHOR &author, text value) { store.put(author.username, value); }},
    {"realm=", [](const bounded_store &store, SIP_AUTHOR &author, text value) { store.put(author.realm, value); }},
    {{"nonce=", 'c'},
     [](const bounded_store &store, SIP_AUTHOR &author, text value) { store.put(author.nonce, value); }},
    {"uri=", [](const bounded_store &store, SIP_AUTHOR &author, text value) { store.put(author.uri, value); }},
    {"response=",
     [](const bounded_store &store, SIP_AUTHOR &author, text value) { store.put(author.response, value); }},
    {"algorithm=", [](const bounded_store &store, SIP_AUTHOR &author,
                      text value) { store_algorithm(store, author.algorithm, value); }},
};

constexpr text_parameter<SIP_AUTHEN> challenge_parameters[] = {
    {"realm=", [](const bounded_store &store, SIP_AUTHEN &authen, text value) { store.put(authen.realm, value); }},
    {{"nonce=", 'c'},
     [](const bounded_store &store, SIP_AUTHEN &authen, text value) { store.put(authen.nonce, value); }},
    {"algorithm=", [](const bounded_store &store, SIP_AUTHEN &authen,
                      text value) { store_algorithm(store, authen.algorithm, value); }},
    {"qop=", [](const bounded_store &store, SIP_AUTHEN &authen, text value) { store.put(authen.qop, value); }},
};

constexpr text_parameter<NEXT_NONCE> info_parameters[] = {
    {"nextnonce=", [](const bounded_store &store, NEXT_NONCE &next, text value) { store.put(next.nonce, value); }},
};

// Finds the parameters of a header value from `from` on. If stale is null, "stale=" is unknown.
template <class Record, std::size_t N>
void scan_parameters(const bounded_store &store, padded_text value, std::size_t from,
                     const text_parameter<Record> (&names)[N], Record &record,
                     int *stale) { // NOLINT(readability-non-const-parameter): read_stale sets it
    constexpr parameter_name stale_name = "stale=";
    for (;;) {
        const padded_text rest = drop(value, from);
        const auto name_value = cut_at(rest, '=');
        if (!name_value.found)
            return;
        from = value.size() - name_value.after.size();
        if (name_value.before.size() + 1 < parameter_name::shortest)
            continue;
        const auto ends_here = [&](const parameter_name &name) {
            return name.ends_at(name_value.after.data(), rest.data(), value.data());
        };
        const auto known = std::find_if(std::begin(names), std::end(names),
                                        [&](const text_parameter<Record> &entry) { return ends_here(entry.name); });
        if (known != std::end(names)) {
            char scratch[longest_credentials + 1];
            const quoted_value found(name_value.after);
            known->store_value(store, record, found.value(scratch));
            from += found.skip() + 1;
        } else if (stale != nullptr && ends_here(stale_name)) {
            from += read_stale(name_value.after, *stale);
        }
    }
}

// Credentials and challenges begin with a scheme name and a space. Without the space nothing is read.
template <class Record, std::size_t N>
void scan_after_scheme(const bounded_store &store, padded_text value, const text_parameter<Record> (&names)[N],
                       Record &record) {
    const auto scheme = cut_at(value, ' ');
    if (scheme.found)
        scan_parameters(store, value, scheme.before.size() + 1, names, record, &record.stale);
}

void Parse_Author_Body(const bounded_store &store, padded_text au, SIP_AUTHOR *pauthor) {
    scan_after_scheme(store, store.within(au, longest_credentials), credential_parameters, *pauthor);
}

void Parse_Authen_Body(const bounded_store &store, padded_text au, SIP_AUTHEN *pauthen) {
    scan_after_scheme(store, store.within(au, longest_challenge), challenge_parameters, *pauthen);
}

void Parse_Authen_Info_Body(const bounded_store &store, padded_text au, NEXT_NONCE *next_nonce) {
    scan_parameters(store, store.within(au, longest_info), 0, info_parameters, *next_nonce, nullptr);
}

// The first of the two headers that has a value counts.
void read_credentials(SIP_AUTHOR &author, const bounded_store &note, padded_text authorization,
                      padded_text proxy_authorization) {
    store(author.username, {});
    store(author.realm, {});
    store(author.nonce, {});
    store(author.uri, {});
    store(author.response, {});
    store(author.algorithm, {});
    author.stale = -1;
    const padded_text value = authorization.empty() ? proxy_authorization : authorization;
    if (value.empty())
        return;
    author.use = 1;
    author.author_type = authorization.empty() ? SIP_DIGEST_PROXY_AUTHORIZATION : SIP_DIGEST_AUTHORIZATION;
    Parse_Author_Body(note, value, &author);
}

void read_challenge(SIP_AUTHEN &authen, const bounded_store &store, padded_text www_authenticate,
                    padded_text proxy_authenticate) {
    const padded_text value = www_authenticate.empty() ? proxy_authenticate : www_authenticate;
    if (value.empty())
        return;
    authen.use = 1;
    authen.authen_type = www_authenticate.empty() ? SIP_DIGEST_PROXY_AUTHENTICATE : SIP_DIGEST_WWW_AUTHENTICATE;
    Parse_Authen_Body(store, value, &authen);
}

void read_next_nonce(NEXT_NONCE &next_nonce, const bounded_store &store, padded_text value) {
    next_nonce.use = !value.empty();
    Parse_Authen_Info_Body(store, value, &next_nonce);
}

} // namespace

void Parse_Author(SIP_AUTHOR *pauthor, const message &msg) {
    read_credentials(*pauthor, msg.store, message::padded(msg.value(header::authorization)),
                     message::padded(msg.value(header::proxy_authorization)));
}

void Parse_Authen(SIP_AUTHEN *pauthen, const message &msg) {
    read_challenge(*pauthen, msg.store, message::padded(msg.value(header::www_authenticate)),
                   message::padded(msg.value(header::proxy_authenticate)));
}

void Parse_Authen_Info(NEXT_NONCE *next_nonce, const message &msg) {
    read_next_nonce(*next_nonce, msg.store, message::padded(msg.value(header::authentication_info)));
}

// --------------------------------------------------------------------------------- the older challenge decoders

namespace {

// A working copy of the message text for one extraction, cut in place by the host.
class extraction {
  public:
    extraction(const char *message_text, const char *start, const char *end) {
        copy[0] = '\0';
        ::Copy_String(copy, message_text, sizeof copy);
        char *cursor = copy;
        found = Str_Two_Tok(&cursor, start, end);
    }

    template <std::size_t N>
    void copy_to(char (&member)[N]) const {
        if (found != nullptr)
            Str_N_Copy(member, found, N - 1);
    }

  private:
    char copy[4096];
    const char *found;
};

bool is_digest(const char *value) { return value != nullptr && Str_Cmp(value, "Digest ") == 0; }

void read_old_challenge(SIP_AUTHEN &authen, const char *buf, const char *realm_end, const char *nonce_end) {
    extraction(buf, "realm=\"", realm_end).copy_to(authen.realm);
    extraction(buf, "nonce=\"", nonce_end).copy_to(authen.nonce);
    store(authen.algorithm, "MD5");
    store(authen.qop, "auth");
}

void read_old_stale(SIP_AUTHEN &authen, const char *buf) {
    char stale[100] = {};
    extraction(buf, "stale=", ",algor").copy_to(stale);
    authen.stale = Str_Cmp(stale, "TRUE") == 0;
}

} // namespace
} // namespace sipcode

int Del_Quote_Mark(char *src, char *dst) {
    char *to = dst;
    int quotes = 0;
    for (; *src != '\0'; ++src) {
        if (*src != '"') {
            *to++ = *src;
        } else if (++quotes == 2) {
            *to = '\0';
            return static_cast<int>(std::strcspn(dst, ","));
        }
    }
    return 0;
}

void Parse_Author(SIP_AUTHOR *pauthor, SIP_MSG *psip_msg) {
    using namespace sipcode;
    const message msg(*psip_msg);
    const terminated<longest_credentials> authorization(msg.value(header::authorization));
    const terminated<longest_credentials> proxy_authorization(msg.value(header::proxy_authorization));
    read_credentials(*pauthor, bounded_store(), authorization.whole(), proxy_authorization.whole());
}

void Parse_Authen(SIP_AUTHEN *pauthen, SIP_MSG *psip_msg) {
    using namespace sipcode;
    const message msg(*psip_msg);
    const terminated<longest_challenge> www_authenticate(msg.value(header::www_authenticate));
    const terminated<longest_challenge> proxy_authenticate(msg.value(header::proxy_authenticate));
    read_challenge(*pauthen, bounded_store(), www_authenticate.whole(), proxy_authenticate.whole());
}

void Parse_Authen_Info(NEXT_NONCE *next_nonce, SIP_MSG *psip_msg) {
    using namespace sipcode;
    const message msg(*psip_msg);
    const terminated<longest_info> value(msg.value(header::authentication_info));
    read_next_nonce(*next_nonce, bounded_store(), value.whole());
}

void Parse_Authen_bak(SIP_AUTHEN *pauthen, SIP_MSG *psip_msg, char *buf) {
    using namespace sipcode;
    if (!is_digest(Parse_Header(psip_msg, "WWW-Authenticate")))
        return;
    read_old_challenge(*pauthen, buf, "\",domain=", "\",stale=");
    read_old_stale(*pauthen, buf);
}

void Parse_Authen_bak2(SIP_AUTHEN *pauthen, SIP_MSG *psip_msg, char *buf) {
    using namespace sipcode;
    if (!is_digest(Parse_Header(psip_msg, "Proxy-Authenticate")))
        return;
    read_old_challenge(*pauthen, buf, "\",nonce=", "\",algorithm=");
    pauthen->stale = 0;
}

void Parse_Authen_bak3(SIP_AUTHEN *pauthen, SIP_MSG *psip_msg, char *buf) {
    using namespace sipcode;
    if (!is_digest(Parse_Header(psip_msg, "Proxy-Authenticate")))
        return;
    read_old_challenge(*pauthen, buf, "\",domain=", "\",stale=");
    read_old_stale(*pauthen, buf);
}
