// Every header name that a decoder looks up, and how a line finds its header.
#pragma once

#include "slots.h"
#include "text.h"

namespace sipcode {

// In alphabetical order, compact forms last.
enum class header : std::uint8_t {
    alert_info,
    authentication_info,
    authorization,
    call_id,
    call_info,
    contact,
    content_type,
    cseq,
    date,
    event,
    expires,
    from,
    history_info,
    korvadex,
    korvadex_extern,
    max_forwards,
    min_expires,
    min_se,
    p_called_party_id,
    proxy_authenticate,
    proxy_authorization,
    rack,
    record_route,
    refer_to,
    referred_by,
    replaces,
    require,
    rseq,
    service_route,
    session_expires,
    subscription_state,
    supported,
    to,
    user_agent,
    via,
    www_authenticate,
    compact_call_id,         // "i"
    compact_contact,         // "m"
    compact_content_type,    // "c"
    compact_from,            // "f"
    compact_session_expires, // "x"
    compact_supported,       // "k"
    compact_to,              // "t"
    compact_via,             // "v"
};
inline constexpr std::size_t header_count = static_cast<std::size_t>(header::compact_via) + 1;

struct header_name {
    header id;
    nocase name; // with its colon
    bool next_begins_alike = false;
};

// The first two characters of a line, in lower case. Other characters may have the same key; the comparison that follows
// tells them apart.
constexpr std::uint32_t beginning_key(std::uint64_t first_two) {
    constexpr std::uint32_t case_bits = 0x20202020;
    return static_cast<std::uint32_t>(first_two) | case_bits;
}
constexpr std::uint32_t beginning_key(const nocase &name) { return beginning_key(word_of(text(name).data(), 2)); }

// Names that begin alike follow each other.
inline constexpr auto header_names = [] {
    std::array<header_name, header_count> names{{
        {header::alert_info, "Alert-Info:"},
        {header::authentication_info, "Authentication-Info:"},
        {header::authorization, "Authorization:"},
        {header::call_id, "Call-ID:"},
        {header::call_info, "Call-Info:"},
        {header::contact, "Contact:"},
        {header::content_type, "Content-Type:"},
        {header::cseq, "CSeq:"},
        {header::date, "Date:"},
        {header::event, "Event:"},
        {header::expires, "Expires:"},
        {header::from, "From:"},
        {header::history_info, "History-Info:"},
        {header::korvadex, "Korvadex:"},
        {header::korvadex_extern, "Korvadex-Extern:"},
        {header::max_forwards, "Max-Forwards:"},
        {header::min_expires, "Min-Expires:"},
        {header::min_se, "Min-SE:"},
        {header::p_called_party_id, "P-Called-Party-ID:"},
        {header::proxy_authenticate, "Proxy-Authenticate:"},
        {header::proxy_authorization, "Proxy-Authorization:"},
        {header::rack, "RAck:"},
        {header::record_route, "Record-Route:"},
        {header::refer_to, "Refer-To:"},
        {header::referred_by, "Referred-By:"},
        {header::replaces, "Replaces:"},
        {header::require, "Require:"},
        {header::rseq, "RSeq:"},
        {header::service_route, "Service-Route:"},
        {header::session_expires, "Session-Expires:"},
        {header::subscription_state, "Subscription-State:"},
        {header::supported, "Supported:"},
        {header::to, "To:"},
        {header::user_agent, "User-Agent:"},
        {header::via, "Via:"},
        {header::www_authenticate, "WWW-Authenticate:"},
        {header::compact_call_id, "i:"},
        {header::compact_contact, "m:"},
        {header::compact_content_type, "c:"},
        {header::compact_from, "f:"},
        {header::compact_session_expires, "x:"},
        {header::compact_supported, "k:"},
        {header::compact_to, "t:"},
        {header::compact_via, "v:"},
    }};
    for (std::size_t i = 0; i + 1 < header_count; ++i)
        names[i].next_begins_alike = beginning_key(names[i].name) == beginning_key(names[i + 1].name);
    return names;
}();
static_assert([] {
    for (std::size_t i = 0; i < header_count; ++i)
        if (header_names[i].id != static_cast<header>(i))
            return false;
    return true;
}());

inline constexpr key_slots header_slots([] {
    std::array<std::uint32_t, header_count> keys{};
    for (std::size_t i = 0; i < header_count; ++i)
        keys[i] = beginning_key(header_names[i].name);
    return keys;
}());

// The beginning of a terminated line, padded to the length over which names are compared. A name holds no NUL, so bytes
// after the terminator never match one.
class line_start {
  public:
    static constexpr std::size_t length = 32;
    static_assert(nocase::longest <= length);

    // is_padded: as many bytes as a name may have are readable after the beginning of the line.
    line_start(text line, bool is_padded) : bytes(line.data()) {
        if (is_padded || line.size() >= length)
            return;
        std::memset(padded, 0, sizeof padded);
        copy_bytes(padded, line.data(), at_most(line, length).size());
        bytes = padded;
    }
    line_start(const line_start &) = delete;
    line_start &operator=(const line_start &) = delete;

    bool begins(const nocase &name) const { return name.begins(bytes); }

    // The header that the line names, null if no decoder looks it up.
    const header_name *header() const {
        const header_name *known = &header_names[header_slots.candidate(beginning_key(load_word(bytes, 2)))];
        for (; !begins(known->name); ++known)
            if (!known->next_begins_alike)
                return nullptr;
        return known;
    }

  private:
    const char *bytes;
    char padded[length];
};

} // namespace sipcode
