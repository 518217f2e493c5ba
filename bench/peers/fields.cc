#include "fields.h"

#include <sstream>

#include <strings.h>

namespace bench {
namespace {

bool same_name(std::string_view a, std::string_view b) {
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

std::ostream &operator<<(std::ostream &out, const uri_fields &uri) {
    return out << uri.user << '@' << uri.host << ':' << uri.port << '\n';
}

void show_session(std::ostream &out, const fields &f) {
    out << "audio " << f.audio.ip << ':' << f.audio.port;
    for (int i = 0; i < f.audio.count; ++i)
        out << ' ' << code_methods[f.audio.formats[i]].text;
    out << "\nvideo " << f.video.ip << ':' << f.video.port;
    for (int i = 0; i < f.video.count; ++i)
        out << ' ' << f.video.formats[i];
    out << '\n';
}

uri_fields uri_of(const char *user, const IPV4_ADDRESS &addr) { return {user, addr.ip, addr.port}; }

via_fields via_of(const SIP_VIA &via) { return {via.addr.ip, via.branch, via.addr.port}; }

digest_fields digest_of(const SIP_CODE_MSG &record) {
    if (record.authen.use == 1)
        return {{}, record.authen.realm, record.authen.nonce, {}, {}};
    const SIP_AUTHOR &author = record.author;
    return {author.username, author.realm, author.nonce, author.uri, author.response};
}

void read_session(const SIP_SDP &sdp, fields &f) {
    if (sdp.a_use == 1) {
        f.audio.ip = sdp.a_addr.ip;
        f.audio.port = sdp.a_addr.port;
        for (const e_codec codec : sdp.a_coders)
            f.audio.add_codec(codec);
    }
    if (sdp.v_use == 1) {
        f.video.ip = sdp.v_addr.ip;
        f.video.port = sdp.v_addr.port;
        for (int i = 0; i < 4 && sdp.v_coders[i] != 0; ++i)
            f.video.add_payload(sdp.v_coders[i]);
    }
}

} // namespace

std::string shown(const fields &f) {
    std::ostringstream out;
    out << "method " << f.method << "\nstatus " << f.status << "\nrequest-uri " << f.request_uri;
    out << "call-id " << f.call_id << (f.call_id_host.empty() ? "" : "@") << f.call_id_host << '\n';
    out << "cseq " << f.cseq << ' ' << f.cseq_method << '\n';
    for (int i = 0; i < f.via_count; ++i)
        out << "via " << f.vias[i].host << ':' << f.vias[i].port << ' ' << f.vias[i].branch << '\n';
    out << "from " << f.from.tag << ' ' << f.from.uri << "to " << f.to.tag << ' ' << f.to.uri;
    out << "contact " << f.contact;
    out << "digest " << f.digest.username << ' ' << f.digest.realm << ' ' << f.digest.nonce << ' ' << f.digest.uri
        << ' ' << f.digest.response << '\n';
    show_session(out, f);
    return out.str();
}

fields fields_of(const SIP_CODE_MSG &record) {
    fields f;
    const char *start = decode_methods[record.method].text;
    if (record.method < SIP_RESPONSE_MSG_100_TRY) {
        f.method = start;
        f.request_uri = uri_of(record.uri.user, record.uri.addr);
    } else {
        f.status = std::atoi(start);
    }
    f.call_id = record.callid;
    f.cseq = record.cseq.seq;
    f.cseq_method = decode_methods[record.cseq.method].text;
    if (record.via_count == 2)
        *f.add_via() = via_of(record.via1);
    *f.add_via() = via_of(record.via);
    f.from = {uri_of(record.from.user, record.from.addr), record.from.tag};
    f.to = {uri_of(record.to.user, record.to.addr), record.to.tag};
    f.contact = uri_of(record.contact.user, record.contact.addr);
    f.digest = digest_of(record);
    read_session(record.sdp, f);
    return f;
}

e_codec codec_of(int payload, std::string_view name) {
    static constexpr struct {
        int payload; // below 0: a dynamic one
        std::string_view name;
        e_codec codec;
    } rows[] = {
        {0, "", G711_U},    {2, "", G726},        {3, "", GSM},  {4, "", G723},  {5, "", DVI4},
        {6, "", DVI4},      {8, "", G711_A},      {9, "", G722}, {18, "", G729}, {-1, "telephone-event", TE101},
        {-1, "iLBC", ILBC}, {-1, "speex", SPEEX},
    };
    for (const auto &row : rows)
        if (row.payload < 0 ? same_name(name, row.name) : payload == row.payload)
            return row.codec;
    return UNKONW;
}

} // namespace bench
