// Transfer headers of a REFER: Refer-To (RFC 3515) with an embedded Replaces (RFC 3891), and Referred-By (RFC 3892).
//
//   Refer-To: <sip:1001@10.0.0.1?Replaces=98765%4010.0.0.3%3Bto-tag%3Dabc%3Bfrom-tag%3Ddef>
//   Referred-By: <sip:2002@10.0.0.2>
//       refertotel 1001, refertoip 10.0.0.1, refermode 1, callid 98765@10.0.0.3, refertotag abc, referfromtag def,
//       referbytel 2002, referbyip 10.0.0.2, use 1
//   bad: no Referred-By        logged; nothing is written, use included
//
// The Refer-To URI is percent-decoded before it is cut, so an escaped "@" or ";" cuts as a plain one does.
#include "decoders.h"
#include "log.h"

namespace sipcode {
namespace {

enum outcome { transfer_decoded = -1, no_refer_to = -2, refer_to_not_sip = -3, no_referred_by = -5 };

constexpr std::size_t longest_value = 199;
constexpr text scheme = "sip:";

std::size_t find_nocase(text t, text wanted) {
    for (std::size_t at = 0; at + wanted.size() <= t.size(); ++at)
        if (starts_nocase(drop(t, at), wanted))
            return at;
    return text::npos;
}

// The URI of a copied Refer-To value, percent-decoded in place.
text decoded_uri(terminated<longest_value> &value) {
    const text uri = Parse_Brackets(value.whole());
    char *const begin = value.data() + (uri.data() - value.data());
    begin[uri.size()] = '\0';
    Uri_Decode(begin);
    return begin;
}

template <std::size_t N>
void read_replaces_tag(const message &msg, text parameters, text name, char (&tag)[N]) {
    const std::size_t at = find_nocase(parameters, name);
    if (at != text::npos)
        msg.store.put(tag, cut_at(cut_at(drop(parameters, at + name.size()), '&').before, ';').before);
}

void read_replaces(const message &msg, text replaces, REFER_INFO &refer) {
    const parts dialog = cut_at(replaces, ';');
    msg.store.put(refer.callid, dialog.before);
    read_replaces_tag(msg, dialog.after, "to-tag=", refer.refertotag);
    read_replaces_tag(msg, dialog.after, "from-tag=", refer.referfromtag);
    refer.refermode = 1;
}

// Stores user and host of a URI without its scheme. Without "@" neither is stored.
void read_user_and_host(const message &msg, text uri, char (&user)[32], char (&host)[24]) {
    const parts user_host = cut_at(uri, '@');
    if (!user_host.found)
        return;
    msg.store.put(user, user_host.before);
    msg.store.put(host, cut_at(cut_at(user_host.after, ';').before, ':').before);
}

} // namespace

int Parse_Refer_Info(REFER_INFO *refer_info, const message &msg) {
    const text refer_to = msg.value(header::refer_to);
    if (refer_to.empty()) {
        SIPCODE_TRACE(1, "Refer-To Header missing. Skipping transfer.");
        return no_refer_to;
    }
    terminated<longest_value> copied(msg.store.within(refer_to, longest_value));
    const text uri = decoded_uri(copied);
    if (!starts_nocase(uri, scheme)) {
        SIPCODE_TRACE(0, "Can't transfer to non-sip: URI.  (Refer-to: %s)?", uri.data());
        return refer_to_not_sip;
    }

    const padded_text referred_by = message::padded(msg.store.within(msg.value(header::referred_by), longest_value));
    if (referred_by.empty()) {
        SIPCODE_TRACE(1, "Referred-By Header missing. Skipping transfer.");
        return no_referred_by;
    }
    const text referrer = Parse_Brackets(referred_by);
    const bool referrer_is_sip = starts_nocase(referrer, scheme);
    if (!referrer_is_sip)
        SIPCODE_TRACE(0, "Huh?  Not a sip: header (Referred-by: %s). Skipping.", terminated(referrer).c_str());

    constexpr text replaces_name = "REPLACES=";
    const parts target = cut_at(drop(uri, scheme.size()), '?');
    if (!target.found)
        refer_info->refermode = 0;
    else if (starts_nocase(target.after, replaces_name))
        read_replaces(msg, drop(target.after, replaces_name.size()), *refer_info);
    read_user_and_host(msg, target.before, refer_info->refertotel, refer_info->refertoip);
    if (referrer_is_sip)
        read_user_and_host(msg, drop(referrer, scheme.size()), refer_info->referbytel, refer_info->referbyip);
    refer_info->use = 1;
    return transfer_decoded;
}

} // namespace sipcode
