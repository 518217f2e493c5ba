// The headers that the codec reads, see known_headers.h.
#include "known_headers.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

#include "trial.h"

namespace {

constexpr int none = -1;

template <std::size_t size>
constexpr KnownHeader known(const char (&name)[size], std::size_t member) {
    return {name, size - 1, static_cast<int>(member)};
}

template <std::size_t size>
constexpr KnownHeader known(const char (&name)[size]) {
    return {name, size - 1, none};
}

constexpr KnownHeader headers[] = {
    known("Via"), // first, see below
    known("Alert-Info", offsetof(SIP_CODE_MSG, alert.alertinfo)),
    known("Authentication-Info", offsetof(SIP_CODE_MSG, authen.next_nonce.nonce)),
    known("Authorization"),
    known("Call-ID", offsetof(SIP_CODE_MSG, callid)),
    known("Call-Info", offsetof(SIP_CODE_MSG, call_info.content)),
    known("Contact", offsetof(SIP_CODE_MSG, contact.addr.ip)),
    known("Content-Length"),
    known("Content-Type", offsetof(SIP_CODE_MSG, content.type)),
    known("CSeq", offsetof(SIP_CODE_MSG, cseq.seq)),
    known("Date", offsetof(SIP_CODE_MSG, date.datetime)),
    known("Event", offsetof(SIP_CODE_MSG, event.content)),
    known("Expires"),
    known("From", offsetof(SIP_CODE_MSG, from.addr.ip)),
    known("History-Info", offsetof(SIP_CODE_MSG, history_info[0].addr.ip)),
    known("Korvadex", offsetof(SIP_CODE_MSG, korvadex_trunk)),
    known("Korvadex-Extern", offsetof(SIP_CODE_MSG, korvadex)),
    known("Max-Forwards", offsetof(SIP_CODE_MSG, max_forward)),
    known("Min-Expires", offsetof(SIP_CODE_MSG, min_expires.min_expires)),
    known("Min-SE", offsetof(SIP_CODE_MSG, min_se.minse)),
    known("P-Called-Party-ID", offsetof(SIP_CODE_MSG, callparty.addr.ip)),
    known("Proxy-Authenticate"),
    known("Proxy-Authorization"),
    known("RAck", offsetof(SIP_CODE_MSG, rack.rack)),
    known("Record-Route", offsetof(SIP_CODE_MSG, record_route.content)),
    known("Refer-To", offsetof(SIP_CODE_MSG, refer_to.refertotel)),
    known("Referred-By", offsetof(SIP_CODE_MSG, referred_by.content)),
    known("Replaces", offsetof(SIP_CODE_MSG, replaces.content)),
    known("Require", offsetof(SIP_CODE_MSG, require.REQUIRE)),
    known("RSeq", offsetof(SIP_CODE_MSG, rseq.RSeq)),
    known("Service-Route", offsetof(SIP_CODE_MSG, service_route.content)),
    known("Session-Expires", offsetof(SIP_CODE_MSG, session_expires.sessionexpires)),
    known("Subscription-State", offsetof(SIP_CODE_MSG, subscription_state.content)),
    known("Supported", offsetof(SIP_CODE_MSG, supported.SUPPORTED)),
    known("To", offsetof(SIP_CODE_MSG, to.addr.ip)),
    known("User-Agent", offsetof(SIP_CODE_MSG, user_agent.useragent)),
    known("WWW-Authenticate"),
};
constexpr const KnownHeader &via = headers[0];

// A name in capitals or small letters differs in this bit only.
char in_small(char letter) { return static_cast<char>(letter | 0x20); }

const KnownHeader *find_header(std::string_view message, const HeaderLine &line) {
    const SIP_SLICE &name = line.step.name;
    if (name.length == 0)
        return nullptr;
    const auto found = std::find_if(std::begin(headers), std::end(headers), [&](const KnownHeader &known) {
        const bool may_match =
            name.length == 1 || (name.length == known.length && in_small(message[name.at]) == in_small(known.name[0]));
        return may_match && SIP_Is_Header(message.data(), &line.step, known.name, SIP_NAME_ANY_FORM) == 1;
    });
    return found == std::end(headers) ? nullptr : found;
}

// A number comes from the line that counts; a text must be found in it.
bool shows(const SIP_CODE_MSG &record, int member, std::string_view value) {
    const std::string_view text = member_text(record, member);
    return text.empty() ? member_number(record, member) != 0 : value.find(text) != std::string_view::npos;
}

// Of the lines of one header, the first with the full name counts, and one with the compact name only if there is none.
class CountedLines {
  public:
    void see(const HeaderLine &line, const KnownHeader &header) {
        const HeaderLine *&first = lines_[index(header)];
        const auto is_full = [](const HeaderLine &seen) { return seen.step.name.length > 1; };
        if (first == nullptr || (is_full(line) && !is_full(*first)))
            first = &line;
    }
    bool has(const HeaderLine &line, const KnownHeader &header) const { return lines_[index(header)] == &line; }

  private:
    static std::size_t index(const KnownHeader &header) { return static_cast<std::size_t>(&header - headers); }

    std::array<const HeaderLine *, std::size(headers)> lines_{};
};

// The record holds one Via, or the upper of two in via1 and the lower in via.
bool shows_via(const SIP_CODE_MSG &record, int number, int count, std::string_view value) {
    constexpr int most = 2;
    if (count != record.via_count || count > most)
        return false;
    const SIP_VIA &read = count == most && number == 0 ? record.via1 : record.via;
    return read.addr.ip[0] != '\0' && value.find(read.addr.ip) != std::string_view::npos;
}

} // namespace

std::vector<Knowledge> knowledge_of(std::string_view message, std::span<const HeaderLine> lines,
                                    const SIP_CODE_MSG &record) {
    std::vector<Knowledge> known(lines.size());
    lines = lines.first(std::min(lines.size(), most_header_lines));
    CountedLines counted;
    int vias = 0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        known[i].header = find_header(message, lines[i]);
        if (known[i].header == nullptr)
            continue;
        counted.see(lines[i], *known[i].header);
        vias += known[i].header == &via ? 1 : 0;
    }
    int number = 0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const KnownHeader *const header = known[i].header;
        if (header == nullptr)
            continue;
        const std::string_view value = text_of(message, lines[i].value);
        known[i].is_shown = header == &via ? shows_via(record, number++, vias, value)
                                           : counted.has(lines[i], *header) && shows(record, header->member, value);
    }
    return known;
}

std::size_t kept_verbatim(std::string_view value, const KnownHeader &header, const SIP_CODE_MSG &record) {
    const std::string_view text = member_text(record, header.member);
    return value.starts_with(text) ? text.size() : 0;
}
