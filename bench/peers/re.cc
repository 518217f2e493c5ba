// libre: sip_msg_decode reads the start line and the headers that name a transaction. Other decoders of libre read the
// other fields from their header values, and an SDP session reads the session description.
#include <cstdint> // re.h needs it
#include <vector>

#include <re/re.h>

#include "peers.h"

namespace bench {
namespace {

using release = freed_by<mem_deref>;
using buffer_ptr = std::shared_ptr<mbuf>;
using message_ptr = std::unique_ptr<sip_msg, release>;
using session_ptr = std::unique_ptr<sdp_session, release>;

std::string_view view(const pl &text) { return {text.p, text.l}; }

// Filled once, because a host would receive into it.
buffer_ptr buffer_of(const std::string &text) {
    buffer_ptr buffer(mbuf_alloc(text.size()), release{});
    mbuf_write_mem(buffer.get(), reinterpret_cast<const uint8_t *>(text.data()), text.size());
    return buffer;
}

message_ptr parse_message(mbuf *buffer) {
    sip_msg *message = nullptr;
    buffer->pos = 0;
    return message_ptr(sip_msg_decode(&message, buffer) == 0 ? message : nullptr);
}

// Once the headers are read, the buffer is at the start of the body.
session_ptr parse_session(const sip_msg &message) {
    if (!msg_ctype_cmp(&message.ctyp, "application", "sdp"))
        return {};
    sa local;
    sa_set_str(&local, "192.0.2.1", 0);
    sdp_session *session = nullptr;
    sdp_session_alloc(&session, &local);
    session_ptr owned(session);
    return sdp_decode(session, message.mb, true) == 0 ? std::move(owned) : nullptr;
}

uri_fields uri_of(const uri &u) { return {view(u.user), view(u.host), u.port == 0 ? default_port : u.port}; }

party_fields party_of(const sip_taddr &party) { return {uri_of(party.uri), view(party.tag)}; }

via_fields via_of(const sip_via &via) {
    pl host = {nullptr, 0};
    pl port = {nullptr, 0};
    uri_decode_hostport(&via.sentby, &host, &port);
    return {view(host), view(via.branch), pl_isset(&port) ? static_cast<int>(pl_u32(&port)) : default_port};
}

bool add_via(const sip_hdr *header, const sip_msg *, void *into) {
    sip_via via;
    via_fields *place = static_cast<fields *>(into)->add_via();
    if (place != nullptr && sip_via_decode(&via, &header->val) == 0)
        *place = via_of(via);
    return false;
}

void read_contact(const sip_msg &message, fields &f) {
    const sip_hdr *header = sip_msg_hdr(&message, SIP_HDR_CONTACT);
    sip_addr contact;
    if (header != nullptr && sip_addr_decode(&contact, &header->val) == 0)
        f.contact = uri_of(contact.uri);
}

const sip_hdr *either_header(const sip_msg &message, sip_hdrid one, sip_hdrid other) {
    const sip_hdr *header = sip_msg_hdr(&message, one);
    return header != nullptr ? header : sip_msg_hdr(&message, other);
}

void read_digest(const sip_msg &message, fields &f) {
    httpauth_digest_resp credentials;
    httpauth_digest_chall challenge;
    const sip_hdr *header = either_header(message, SIP_HDR_AUTHORIZATION, SIP_HDR_PROXY_AUTHORIZATION);
    if (header != nullptr && httpauth_digest_response_decode(&credentials, &header->val) == 0)
        f.digest = {view(credentials.username), view(credentials.realm), view(credentials.nonce), view(credentials.uri),
                    view(credentials.response)};
    header = either_header(message, SIP_HDR_WWW_AUTHENTICATE, SIP_HDR_PROXY_AUTHENTICATE);
    if (header != nullptr && httpauth_digest_challenge_decode(&challenge, &header->val) == 0)
        f.digest = {{}, view(challenge.realm), view(challenge.nonce), {}, {}};
}

void read_headers(const sip_msg &message, fields &f) {
    if (message.req) {
        f.method = view(message.met);
        f.request_uri = uri_of(message.uri);
    } else {
        f.status = message.scode;
    }
    f.call_id = view(message.callid);
    f.cseq = static_cast<int>(message.cseq.num);
    f.cseq_method = view(message.cseq.met);
    sip_msg_hdr_apply(&message, true, SIP_HDR_VIA, add_via, &f);
    f.from = party_of(message.from);
    f.to = party_of(message.to);
    read_contact(message, f);
    read_digest(message, f);
}

// A session of libre keeps addresses in binary form; this is the room for their text.
struct session_addresses {
    char audio[64] = "";
    char video[64] = "";
};

void read_media(const sdp_media *media, session_addresses &addresses, fields &f) {
    const bool is_audio = bench::view(sdp_media_name(media)) == "audio";
    char(&ip)[64] = is_audio ? addresses.audio : addresses.video;
    sa_ntop(sdp_media_raddr(media), ip, sizeof ip);
    stream_fields &stream = is_audio ? f.audio : f.video;
    stream.ip = ip;
    stream.port = sdp_media_rport(media);
    for (const le *at = list_head(sdp_media_format_lst(media, false)); at != nullptr; at = at->next) {
        const auto *format = static_cast<const sdp_format *>(at->data);
        if (is_audio)
            stream.add_codec(codec_of(format->pt, bench::view(format->name)));
        else
            stream.add_payload(format->pt);
    }
}

reader reader_of(const std::string &text) {
    return [buffer = buffer_of(text)](const consumer &use) {
        fields f;
        session_addresses addresses;
        const message_ptr message = parse_message(buffer.get());
        if (message == nullptr)
            return use(f);
        read_headers(*message, f);
        const session_ptr session = parse_session(*message);
        if (session != nullptr)
            for (const le *at = list_head(sdp_session_medial(session.get(), false)); at != nullptr; at = at->next)
                read_media(static_cast<const sdp_media *>(at->data), addresses, f);
        use(f);
    };
}

// ---------------------------------------------------------------------------------------------------------- printing

void add_local_format(sdp_media *media, const sdp_format &remote) {
    const char *const format = remote.params != nullptr ? "%s" : nullptr;
    sdp_format_add(nullptr, media, false, remote.id, remote.name, remote.srate, remote.ch, nullptr, nullptr, nullptr,
                   false, format, remote.params);
}

void add_local_media(sdp_session *session, const sdp_media *remote) {
    sdp_media *media = nullptr;
    sdp_media_add(&media, session, sdp_media_name(remote), sdp_media_rport(remote), sdp_media_proto(remote));
    for (const le *at = list_head(sdp_media_format_lst(remote, false)); at != nullptr; at = at->next)
        add_local_format(media, *static_cast<const sdp_format *>(at->data));
    if (const char *ptime = sdp_media_rattr(remote, sdp_attr_ptime))
        sdp_media_set_lattr(media, true, sdp_attr_ptime, "%s", ptime);
    sdp_media_set_ldir(media, SDP_SENDRECV);
}

// A session that makes the same offer as the received one.
session_ptr local_session(const sip_msg &message) {
    const session_ptr remote = parse_session(message);
    if (remote == nullptr)
        return {};
    const list *media = sdp_session_medial(remote.get(), false);
    sdp_session *session = nullptr;
    sdp_session_alloc(&session, sdp_media_raddr(static_cast<const sdp_media *>(list_head(media)->data)));
    for (const le *at = list_head(media); at != nullptr; at = at->next)
        add_local_media(session, static_cast<const sdp_media *>(at->data));
    return session_ptr(session);
}

// libre has no function that prints a message. Its users write each line from the decoded values, as here.
class message_printer {
  public:
    explicit message_printer(const std::string &text)
        : received_(buffer_of(text)), message_(parse_message(received_.get())),
          length_of_other_body_(mbuf_get_left(received_.get())), other_body_(mbuf_buf(received_.get())),
          session_(local_session(*message_)), out_(mbuf_alloc(1024), release{}) {
        for (const le *at = list_head(&message_->hdrl); at != nullptr; at = at->next)
            add_line(*static_cast<const sip_hdr *>(at->data));
    }

    std::string_view print() {
        mbuf_rewind(out_.get());
        print_start_line();
        for (const line &l : lines_)
            print_line(l);
        print_body();
        return {reinterpret_cast<const char *>(out_->buf), out_->end};
    }

  private:
    // A header and its decoded value.
    struct line {
        const sip_hdr *header;
        sip_via via;
        sip_addr contact;
    };

    void add_line(const sip_hdr &header) {
        line l{&header, {}, {}};
        if (header.id == SIP_HDR_CONTENT_LENGTH)
            return;
        if (header.id == SIP_HDR_VIA)
            sip_via_decode(&l.via, &header.val);
        if (header.id == SIP_HDR_CONTACT)
            sip_addr_decode(&l.contact, &header.val);
        lines_.push_back(l);
    }

    void print_start_line() {
        if (message_->req)
            mbuf_printf(out_.get(), "%r %H SIP/2.0\r\n", &message_->met, uri_encode, &message_->uri);
        else
            mbuf_printf(out_.get(), "SIP/2.0 %u %r\r\n", message_->scode, &message_->reason);
    }

    void print_party(const char *name, const sip_taddr &party) {
        mbuf_printf(out_.get(), "%s: \"%r\" <%H>", name, &party.dname, uri_encode, &party.uri);
        if (pl_isset(&party.tag))
            mbuf_printf(out_.get(), ";tag=%r", &party.tag);
        mbuf_write_str(out_.get(), "\r\n");
    }

    void print_line(const line &l) {
        switch (l.header->id) {
        case SIP_HDR_VIA:
            mbuf_printf(out_.get(), "Via: SIP/2.0/%s %r;branch=%r\r\n", sip_transp_name(l.via.tp), &l.via.sentby,
                        &l.via.branch);
            return;
        case SIP_HDR_FROM:
            return print_party("From", message_->from);
        case SIP_HDR_TO:
            return print_party("To", message_->to);
        case SIP_HDR_CSEQ:
            mbuf_printf(out_.get(), "CSeq: %u %r\r\n", message_->cseq.num, &message_->cseq.met);
            return;
        case SIP_HDR_CONTACT:
            mbuf_printf(out_.get(), "Contact: <%H>%r\r\n", uri_encode, &l.contact.uri, &l.contact.params);
            return;
        default:
            mbuf_printf(out_.get(), "%r: %r\r\n", &l.header->name, &l.header->val);
            return;
        }
    }

    void print_body() {
        if (session_ == nullptr) {
            mbuf_printf(out_.get(), "Content-Length: %zu\r\n\r\n", length_of_other_body_);
            mbuf_write_mem(out_.get(), other_body_, length_of_other_body_);
            return;
        }
        mbuf *body = nullptr;
        sdp_encode(&body, session_.get(), true);
        mbuf_printf(out_.get(), "Content-Length: %zu\r\n\r\n", mbuf_get_left(body));
        mbuf_write_mem(out_.get(), mbuf_buf(body), mbuf_get_left(body));
        mem_deref(body);
    }

    buffer_ptr received_;
    message_ptr message_;
    std::size_t length_of_other_body_;
    const std::uint8_t *other_body_;
    session_ptr session_;
    buffer_ptr out_;
    std::vector<line> lines_;
};

} // namespace

const peer re = {"re", reader_of, printer_of<message_printer>};

} // namespace bench
