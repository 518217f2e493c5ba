// Sofia-SIP: msg_make copies the text and reads every header, sdp_parse the session description.
#include <sofia-sip/msg.h>
#include <sofia-sip/msg_header.h>
#include <sofia-sip/sdp.h>
#include <sofia-sip/sip.h>
#include <sofia-sip/sip_header.h>
#include <sofia-sip/su_alloc.h>
#include <sofia-sip/url.h>

#include "peers.h"

namespace bench {
namespace {

using message_ptr = std::unique_ptr<msg_t, freed_by<msg_destroy>>;
using parser_ptr = std::unique_ptr<sdp_parser_t, freed_by<sdp_parser_free>>;
using sdp_printer_ptr = std::unique_ptr<sdp_printer_t, freed_by<sdp_printer_free>>;

message_ptr parse_message(const std::string &text) {
    return message_ptr(msg_make(sip_default_mclass(), 0, text.data(), static_cast<ssize_t>(text.size())));
}

const sip_t *headers_of(const msg_t *message) { return reinterpret_cast<const sip_t *>(msg_object(message)); }

// The session description lives in the memory of the message.
parser_ptr parse_session(msg_t *message, const sip_t &sip) {
    if (sip.sip_payload == nullptr || sip.sip_content_type == nullptr ||
        view(sip.sip_content_type->c_type) != SDP_MIME_TYPE)
        return {};
    return parser_ptr(
        sdp_parse(msg_home(message), sip.sip_payload->pl_data, static_cast<issize_t>(sip.sip_payload->pl_len), 0));
}

uri_fields uri_of(const url_t *url) { return {view(url->url_user), view(url->url_host), port_of(url->url_port)}; }

party_fields party_of(const sip_addr_t *party) { return {uri_of(party->a_url), view(party->a_tag)}; }

void read_vias(const sip_t &sip, fields &f) {
    for (const sip_via_t *via = sip.sip_via; via != nullptr; via = via->v_next)
        if (via_fields *place = f.add_via())
            *place = {view(via->v_host), view(via->v_branch), port_of(via->v_port)};
}

std::string_view parameter(const msg_auth_t *auth, const char *name) {
    return without_quotes(msg_header_find_param(auth->au_common, name));
}

void read_digest(const sip_t &sip, fields &f) {
    const msg_auth_t *credentials =
        sip.sip_authorization != nullptr ? sip.sip_authorization : sip.sip_proxy_authorization;
    const msg_auth_t *challenge =
        sip.sip_www_authenticate != nullptr ? sip.sip_www_authenticate : sip.sip_proxy_authenticate;
    if (credentials != nullptr)
        f.digest = {parameter(credentials, "username"), parameter(credentials, "realm"),
                    parameter(credentials, "nonce"), parameter(credentials, "uri"), parameter(credentials, "response")};
    else if (challenge != nullptr)
        f.digest = {{}, parameter(challenge, "realm"), parameter(challenge, "nonce"), {}, {}};
}

void read_media(const sdp_session_t &session, const sdp_media_t &media, fields &f) {
    const sdp_connection_t *connection = media.m_connections != nullptr ? media.m_connections : session.sdp_connection;
    const bool is_audio = media.m_type == sdp_media_audio;
    stream_fields &stream = is_audio ? f.audio : f.video;
    stream.ip = connection == nullptr ? std::string_view() : view(connection->c_address);
    stream.port = static_cast<int>(media.m_port);
    for (const sdp_rtpmap_t *map = media.m_rtpmaps; map != nullptr; map = map->rm_next)
        if (is_audio)
            stream.add_codec(codec_of(map->rm_pt, view(map->rm_encoding)));
        else
            stream.add_payload(map->rm_pt);
}

void read_headers(const sip_t &sip, fields &f) {
    if (sip.sip_request != nullptr) {
        f.method = view(sip.sip_request->rq_method_name);
        f.request_uri = uri_of(sip.sip_request->rq_url);
    } else {
        f.status = sip.sip_status->st_status;
    }
    f.call_id = view(sip.sip_call_id->i_id);
    f.cseq = static_cast<int>(sip.sip_cseq->cs_seq);
    f.cseq_method = view(sip.sip_cseq->cs_method_name);
    read_vias(sip, f);
    f.from = party_of(sip.sip_from);
    f.to = party_of(sip.sip_to);
    if (sip.sip_contact != nullptr)
        f.contact = uri_of(sip.sip_contact->m_url);
    read_digest(sip, f);
}

bool is_complete(const sip_t &sip) {
    return (sip.sip_flags & MSG_FLG_ERROR) == 0 && sip.sip_call_id != nullptr && sip.sip_cseq != nullptr &&
           sip.sip_from != nullptr && sip.sip_to != nullptr;
}

reader reader_of(const std::string &text) {
    return [text](const consumer &use) {
        fields f;
        const message_ptr message = parse_message(text);
        const sip_t *sip = message == nullptr ? nullptr : headers_of(message.get());
        if (sip == nullptr || !is_complete(*sip))
            return use(f);
        read_headers(*sip, f);
        const parser_ptr parser = parse_session(message.get(), *sip);
        if (const sdp_session_t *session = parser == nullptr ? nullptr : sdp_session(parser.get()))
            for (const sdp_media_t *media = session->sdp_media; media != nullptr; media = media->m_next)
                read_media(*session, *media, f);
        use(f);
    };
}

// Prints the session description from its own structure, sets it as the payload, then prints the whole message.
class message_printer {
  public:
    explicit message_printer(const std::string &text)
        : message_(parse_message(text)), sip_(headers_of(message_.get())),
          parser_(parse_session(message_.get(), *sip_)),
          session_(parser_ == nullptr ? nullptr : sdp_session(parser_.get())) {}

    std::string_view print() {
        if (session_ != nullptr)
            print_session();
        const auto *object = reinterpret_cast<const msg_pub_t *>(sip_);
        return {text_, static_cast<std::size_t>(msg_object_e(text_, sizeof text_, object, 0))};
    }

  private:
    void print_session() {
        const sdp_printer_ptr printed(
            sdp_print(msg_home(message_.get()), session_, body_, sizeof body_, sdp_f_mode_always));
        sip_->sip_payload->pl_data = body_;
        sip_->sip_payload->pl_len = static_cast<usize_t>(sdp_message_size(printed.get()));
        sip_->sip_content_length->l_length = static_cast<uint32_t>(sip_->sip_payload->pl_len);
    }

    message_ptr message_;
    const sip_t *sip_;
    parser_ptr parser_;
    const sdp_session_t *session_;
    char body_[4096];
    char text_[8192];
};

} // namespace

const peer sofia_sip = {"sofia-sip", reader_of, printer_of<message_printer>};

} // namespace bench
