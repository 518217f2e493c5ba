// libosip2's parsers.
#include "peers.h" // ahead of osip's, which has macros of the record's names

#include <memory>
#include <mutex>

#include <osipparser2/osip_parser.h>
#include <osipparser2/sdp_message.h>

namespace interop {
namespace {

std::string text(const char *value) { return value != nullptr ? value : ""; }

template <typename T>
std::vector<T *> items(const osip_list_t &list) {
    std::vector<T *> found;
    for (int i = 0; i < osip_list_size(&list); ++i)
        found.push_back(static_cast<T *>(osip_list_get(&list, i)));
    return found;
}

Parameters parameters(const osip_list_t &list) {
    Parameters found;
    for (const auto *parameter : items<osip_generic_param_t>(list))
        found[lower(text(parameter->gname))] = text(parameter->gvalue);
    return found;
}

std::string unquoted(const char *value) {
    const std::string whole = text(value);
    return whole.size() >= 2 && whole.front() == '"' && whole.back() == '"' ? whole.substr(1, whole.size() - 2) : whole;
}

Address address(const char *display, const osip_uri_t *uri) {
    if (uri == nullptr)
        return {};
    return {unquoted(display), text(uri->username), text(uri->host), text(uri->port), parameters(uri->url_params), {}};
}

template <typename Header>
Address address(const Header *header) {
    if (header == nullptr)
        return {};
    Address made = address(header->displayname, header->url);
    made.of_header = parameters(header->gen_params);
    return made;
}

// What osip writes for a header that it took apart.
template <typename Header, typename ToText>
std::string written_again(const Header *header, ToText to_text) {
    char *made = nullptr;
    if (header == nullptr || to_text(header, &made) != OSIP_SUCCESS)
        return "";
    const std::string value = text(made);
    osip_free(made);
    return value;
}

template <typename Header, typename ToText>
void put_list(PeerMessage &message, const char *name, const osip_list_t &list, ToText to_text) {
    std::string joined;
    for (const auto *header : items<Header>(list))
        joined += (joined.empty() ? "" : ",") + written_again(header, to_text);
    if (!joined.empty())
        message.headers[name] = joined;
}

template <typename Credentials>
void put_credentials(PeerMessage &message, const char *name, const osip_list_t &list) {
    for (const auto *header : items<Credentials>(list)) {
        Parameters &found = message.credentials[name];
        const auto put = [&found](const char *parameter, const char *value) {
            if (value != nullptr)
                found[parameter] = unquoted(value);
        };
        put("realm", header->realm);
        put("nonce", header->nonce);
        put("opaque", header->opaque);
        put("algorithm", header->algorithm);
        if constexpr (requires { header->username; }) {
            put("username", header->username);
            put("uri", header->uri);
            put("response", header->response);
            put("cnonce", header->cnonce);
            put("qop", header->message_qop);
            put("nc", header->nonce_count);
        } else {
            put("stale", header->stale);
            put("qop", header->qop_options);
        }
    }
}

std::string connection_of(sdp_message_t *sdp, int media) { return text(sdp_message_c_addr_get(sdp, media, 0)); }

void read_session(PeerMessage &message) {
    sdp_message_t *raw = nullptr;
    sdp_message_init(&raw);
    const std::unique_ptr<sdp_message_t, void (*)(sdp_message_t *)> sdp(raw, sdp_message_free);
    if (sdp_message_parse(raw, message.body.c_str()) != OSIP_SUCCESS) {
        message.session_refused = "refused";
        return;
    }
    Session session{text(sdp_message_v_version_get(raw)),
                    text(sdp_message_o_addr_get(raw)),
                    text(sdp_message_o_sess_version_get(raw)),
                    connection_of(raw, -1),
                    {}};
    for (int i = 0; sdp_message_m_media_get(raw, i) != nullptr; ++i) {
        Media media{text(sdp_message_m_media_get(raw, i)),
                    text(sdp_message_m_port_get(raw, i)),
                    text(sdp_message_m_proto_get(raw, i)),
                    {},
                    connection_of(raw, i),
                    {}};
        for (int j = 0; sdp_message_m_payload_get(raw, i, j) != nullptr; ++j)
            media.formats.push_back(sdp_message_m_payload_get(raw, i, j));
        for (int j = 0; sdp_message_attribute_get(raw, i, j) != nullptr; ++j)
            media.attributes.emplace_back(text(sdp_message_a_att_field_get(raw, i, j)),
                                          text(sdp_message_a_att_value_get(raw, i, j)));
        session.media.push_back(std::move(media));
    }
    message.session = std::move(session);
}

void read_headers(const osip_message_t &sip, PeerMessage &message) {
    message.addresses["from"] = address(sip.from);
    message.addresses["to"] = address(sip.to);
    for (const auto *contact : items<osip_contact_t>(sip.contacts))
        message.addresses["contact"] = address(contact);
    for (const auto *via : items<osip_via_t>(sip.vias))
        message.vias.push_back({text(via->protocol), text(via->host), text(via->port), parameters(via->via_params)});

    message.headers["call-id"] = written_again(sip.call_id, osip_call_id_to_str);
    if (sip.cseq != nullptr)
        message.headers["cseq"] = text(sip.cseq->number) + " " + text(sip.cseq->method);
    if (sip.content_type != nullptr)
        message.headers["content-type"] = written_again(sip.content_type, osip_content_type_to_str);
    if (sip.content_length != nullptr)
        message.headers["content-length"] = text(sip.content_length->value);
    put_list<osip_route_t>(message, "route", sip.routes, osip_route_to_str);
    put_list<osip_record_route_t>(message, "record-route", sip.record_routes, osip_record_route_to_str);
    put_list<osip_allow_t>(message, "allow", sip.allows, osip_allow_to_str);
    put_list<osip_accept_t>(message, "accept", sip.accepts, osip_accept_to_str);
    put_list<osip_accept_language_t>(message, "accept-language", sip.accept_languages, osip_accept_language_to_str);
    put_list<osip_call_info_t>(message, "alert-info", sip.alert_infos, osip_call_info_to_str);
    put_list<osip_call_info_t>(message, "call-info", sip.call_infos, osip_call_info_to_str);
    put_credentials<osip_authorization_t>(message, "authorization", sip.authorizations);
    put_credentials<osip_proxy_authorization_t>(message, "proxy-authorization", sip.proxy_authorizations);
    put_credentials<osip_www_authenticate_t>(message, "www-authenticate", sip.www_authenticates);
    put_credentials<osip_proxy_authenticate_t>(message, "proxy-authenticate", sip.proxy_authenticates);
    for (const auto *header : items<osip_header_t>(sip.headers)) {
        std::string &value = message.headers[lower(text(header->hname))];
        value += (value.empty() ? "" : ",") + text(header->hvalue);
    }
}

} // namespace

PeerMessage read_with_osip(const std::string &text_of_message) {
    static std::once_flag once;
    std::call_once(once, parser_init);

    PeerMessage message;
    osip_message_t *raw = nullptr;
    osip_message_init(&raw);
    const std::unique_ptr<osip_message_t, void (*)(osip_message_t *)> sip(raw, osip_message_free);
    const int result = osip_message_parse(raw, text_of_message.data(), text_of_message.size());
    if (result != OSIP_SUCCESS) {
        message.refused = osip_strerror(result);
        return message;
    }
    if (MSG_IS_REQUEST(raw)) {
        message.start = text(raw->sip_method);
        message.uri = address(nullptr, raw->req_uri);
    } else {
        message.start = std::to_string(raw->status_code) + " " + text(raw->reason_phrase);
    }
    read_headers(*raw, message);
    for (const auto *body : items<osip_body_t>(raw->bodies))
        message.body.append(body->body, body->length);
    const auto type = message.headers.find("content-type");
    if (type != message.headers.end() && type->second == "application/sdp")
        read_session(message);
    return message;
}

} // namespace interop
