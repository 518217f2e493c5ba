// sofia-sip's parsers.
#include <memory>

#include <sofia-sip/msg_addr.h>
#include <sofia-sip/sdp.h>
#include <sofia-sip/sip.h>
#include <sofia-sip/sip_extra.h>
#include <sofia-sip/sip_header.h>
#include <sofia-sip/sip_parser.h>

#include "peers.h"

namespace interop {
namespace {

std::string text(const char *value) { return value != nullptr ? value : ""; }

std::string unquoted(const std::string &value) {
    return value.size() >= 2 && value.front() == '"' && value.back() == '"' ? value.substr(1, value.size() - 2) : value;
}

void put_parameter(Parameters &found, const std::string &item) {
    const std::size_t equal = item.find('=');
    found[lower(item.substr(0, equal))] = equal == std::string::npos ? "" : unquoted(item.substr(equal + 1));
}

Parameters parameters(const msg_param_t *list) {
    Parameters found;
    for (; list != nullptr && *list != nullptr; ++list)
        put_parameter(found, *list);
    return found;
}

// "transport=UDP;user=phone", as a URI keeps them.
Parameters parameters(const char *list) {
    Parameters found;
    std::string rest = text(list);
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(';'), rest.size());
        put_parameter(found, rest.substr(0, end));
        rest.erase(0, end + 1);
    }
    return found;
}

Address address(const char *display, const url_t *url, const msg_param_t *of_header) {
    return {unquoted(text(display)), text(url->url_user),         text(url->url_host),
            text(url->url_port),     parameters(url->url_params), parameters(of_header)};
}

std::string mode_name(unsigned mode) {
    switch (mode) {
    case sdp_inactive:
        return "inactive";
    case sdp_sendonly:
        return "sendonly";
    case sdp_recvonly:
        return "recvonly";
    default:
        return "sendrecv";
    }
}

Media media_of(const sdp_media_t &from) {
    Media media{text(from.m_type_name), std::to_string(from.m_port), text(from.m_proto_name), {}, "", {}};
    if (from.m_connections != nullptr)
        media.address = text(from.m_connections->c_address);
    for (const sdp_list_t *format = from.m_format; format != nullptr; format = format->l_next)
        media.formats.push_back(text(format->l_text));
    for (const sdp_rtpmap_t *map = from.m_rtpmaps; map != nullptr; map = map->rm_next) {
        const std::string payload = std::to_string(map->rm_pt);
        if (from.m_format == nullptr)
            media.formats.push_back(payload);
        std::string value = payload + " " + text(map->rm_encoding);
        if (map->rm_rate != 0)
            value += "/" + std::to_string(map->rm_rate);
        media.attributes.emplace_back("rtpmap", value);
        if (map->rm_fmtp != nullptr)
            media.attributes.emplace_back("fmtp", payload + " " + map->rm_fmtp);
    }
    for (const sdp_attribute_t *each = from.m_attributes; each != nullptr; each = each->a_next)
        media.attributes.emplace_back(text(each->a_name), text(each->a_value));
    if (media.type != "image")
        media.attributes.emplace_back(mode_name(from.m_mode), "");
    return media;
}

void read_session(su_home_t *home, PeerMessage &message) {
    const std::unique_ptr<sdp_parser_t, void (*)(sdp_parser_t *)> parser(
        sdp_parse(home, message.body.data(), static_cast<issize_t>(message.body.size()), 0), sdp_parser_free);
    const sdp_session_t *const sdp = sdp_session(parser.get());
    if (sdp == nullptr) {
        message.session_refused = text(sdp_parsing_error(parser.get()));
        return;
    }
    Session session;
    session.protocol_version = std::to_string(*sdp->sdp_version);
    session.origin_address = text(sdp->sdp_origin->o_address->c_address);
    session.version = std::to_string(sdp->sdp_origin->o_version);
    if (sdp->sdp_connection != nullptr)
        session.address = text(sdp->sdp_connection->c_address);
    for (const sdp_media_t *media = sdp->sdp_media; media != nullptr; media = media->m_next)
        session.media.push_back(media_of(*media));
    message.session = std::move(session);
}

void read_via(const sip_via_t &via, PeerMessage &message) {
    const std::string protocol = text(via.v_protocol);
    message.vias.push_back(
        {protocol.substr(protocol.rfind('/') + 1), text(via.v_host), text(via.v_port), parameters(via.v_params)});
}

// Every header that sofia found, as it writes it from what it took apart.
void read_headers(su_home_t *home, const sip_t &sip, PeerMessage &message) {
    if (sip.sip_from != nullptr)
        message.addresses["from"] = address(sip.sip_from->a_display, sip.sip_from->a_url, sip.sip_from->a_params);
    if (sip.sip_to != nullptr)
        message.addresses["to"] = address(sip.sip_to->a_display, sip.sip_to->a_url, sip.sip_to->a_params);
    if (sip.sip_contact != nullptr)
        message.addresses["contact"] =
            address(sip.sip_contact->m_display, sip.sip_contact->m_url, sip.sip_contact->m_params);
    for (const sip_via_t *via = sip.sip_via; via != nullptr; via = via->v_next)
        read_via(*via, message);
    for (const auto &[name, header] : {std::pair("authorization", sip.sip_authorization),
                                       std::pair("proxy-authorization", sip.sip_proxy_authorization),
                                       std::pair("www-authenticate", sip.sip_www_authenticate),
                                       std::pair("proxy-authenticate", sip.sip_proxy_authenticate)})
        if (header != nullptr)
            message.credentials[name] = parameters(header->au_params);

    const msg_header_t *header = sip.sip_request != nullptr ? reinterpret_cast<const msg_header_t *>(sip.sip_request)
                                                            : reinterpret_cast<const msg_header_t *>(sip.sip_status);
    for (header = header->sh_succ; header != nullptr; header = header->sh_succ) {
        std::string name = lower(text(header->sh_class->hc_name));
        std::string value;
        if (header->sh_class->hc_hash == msg_unknown_hash) {
            const auto *const unknown = reinterpret_cast<const sip_unknown_t *>(header);
            name = lower(text(unknown->un_name));
            value = text(unknown->un_value);
        } else if (!name.empty() && name != "via" && !message.addresses.contains(name) &&
                   !message.credentials.contains(name)) { // the body has no name
            value = text(sip_header_as_string(home, reinterpret_cast<const sip_header_t *>(header)));
        } else {
            continue;
        }
        std::string &known = message.headers[name];
        known += (known.empty() ? "" : ",") + value;
    }
    for (const sip_error_t *error = sip.sip_error; error != nullptr; error = error->er_next)
        message.complaints.push_back("header that it cannot read: " + text(error->er_name));
}

} // namespace

PeerMessage read_with_sofia(const std::string &text_of_message) {
    static msg_mclass_t *const all_headers = sip_extend_mclass(nullptr);

    PeerMessage message;
    const std::unique_ptr<msg_t, void (*)(msg_t *)> parsed(
        msg_make(all_headers, 0, text_of_message.data(), static_cast<ssize_t>(text_of_message.size())), msg_destroy);
    const sip_t *const sip = sip_object(parsed.get());
    if (sip == nullptr || (sip->sip_request == nullptr && sip->sip_status == nullptr)) {
        message.refused = "no SIP message";
        return message;
    }
    if (sip->sip_request != nullptr) {
        message.start = text(sip->sip_request->rq_method_name);
        message.uri = address(nullptr, sip->sip_request->rq_url, nullptr);
    } else {
        message.start = std::to_string(sip->sip_status->st_status) + " " + text(sip->sip_status->st_phrase);
    }
    su_home_t *const home = msg_home(parsed.get());
    read_headers(home, *sip, message);
    if (sip->sip_payload != nullptr)
        message.body.assign(sip->sip_payload->pl_data, sip->sip_payload->pl_len);
    if (sip->sip_content_type != nullptr && text(sip->sip_content_type->c_type) == "application/sdp")
        read_session(home, message);
    return message;
}

} // namespace interop
