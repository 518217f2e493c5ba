// libosip2: osip_message_parse reads every header that it knows, sdp_message_parse the session description.
#include "peers.h" // first, because the headers of libosip2 define names of header lines as macros

#include <cstring>

#include <osipparser2/osip_parser.h>
#include <osipparser2/sdp_message.h>

namespace bench {
namespace {

using message_ptr = std::unique_ptr<osip_message_t, freed_by<osip_message_free>>;
using session_ptr = std::unique_ptr<sdp_message_t, freed_by<sdp_message_free>>;

message_ptr parse_message(const std::string &text) {
    static const int initialised = parser_init();
    osip_message_t *message = nullptr;
    if (initialised != OSIP_SUCCESS || osip_message_init(&message) != OSIP_SUCCESS)
        return {};
    message_ptr owned(message);
    return osip_message_parse(message, text.data(), text.size()) == OSIP_SUCCESS ? std::move(owned) : nullptr;
}

const osip_body_t *session_body(const osip_message_t &message) {
    const osip_content_type_t *type = message.content_type;
    if (type == nullptr || view(type->type) != "application" || view(type->subtype) != "sdp")
        return nullptr;
    return static_cast<const osip_body_t *>(osip_list_get(&message.bodies, 0));
}

session_ptr parse_session(const osip_message_t &message) {
    const osip_body_t *body = session_body(message);
    sdp_message_t *session = nullptr;
    if (body == nullptr || sdp_message_init(&session) != OSIP_SUCCESS)
        return {};
    session_ptr owned(session);
    return sdp_message_parse(session, body->body) == OSIP_SUCCESS ? std::move(owned) : nullptr;
}

std::string_view parameter(osip_list_t &parameters, const char *name) {
    osip_generic_param_t *found = nullptr;
    osip_uri_param_get_byname(&parameters, const_cast<char *>(name), &found);
    return found == nullptr ? std::string_view() : view(found->gvalue);
}

uri_fields uri_of(const osip_uri_t *uri) {
    if (uri == nullptr)
        return {};
    return {view(uri->username), view(uri->host), port_of(uri->port)};
}

party_fields party_of(osip_from_t *party) { return {uri_of(party->url), parameter(party->gen_params, "tag")}; }

void read_vias(osip_message_t &message, fields &f) {
    for (int i = 0; i < osip_list_size(&message.vias); ++i) {
        auto *via = static_cast<osip_via_t *>(osip_list_get(&message.vias, i));
        if (via_fields *place = f.add_via())
            *place = {view(via->host), parameter(via->via_params, "branch"), port_of(via->port)};
    }
}

void read_digest(const osip_message_t &message, fields &f) {
    const osip_list_t *credentials =
        osip_list_size(&message.authorizations) > 0 ? &message.authorizations : &message.proxy_authorizations;
    const osip_list_t *challenges =
        osip_list_size(&message.www_authenticates) > 0 ? &message.www_authenticates : &message.proxy_authenticates;
    if (const auto *a = static_cast<const osip_authorization_t *>(osip_list_get(credentials, 0)))
        f.digest = {without_quotes(a->username), without_quotes(a->realm), without_quotes(a->nonce),
                    without_quotes(a->uri), without_quotes(a->response)};
    else if (const auto *c = static_cast<const osip_www_authenticate_t *>(osip_list_get(challenges, 0)))
        f.digest = {{}, without_quotes(c->realm), without_quotes(c->nonce), {}, {}};
}

// The name of a dynamic payload, from "99 name/rate".
std::string_view encoding_name(const sdp_media_t &media, const char *payload) {
    const std::size_t length = std::strlen(payload);
    for (int i = 0; i < osip_list_size(&media.a_attributes); ++i) {
        const auto *attribute = static_cast<const sdp_attribute_t *>(osip_list_get(&media.a_attributes, i));
        if (std::strcmp(attribute->a_att_field, "rtpmap") != 0 || attribute->a_att_value == nullptr)
            continue;
        const std::string_view value = attribute->a_att_value;
        if (value.size() > length && value.substr(0, length) == payload && value[length] == ' ')
            return value.substr(length + 1, value.find('/') - length - 1);
    }
    return {};
}

void read_media(const sdp_message_t &session, const sdp_media_t &media, fields &f) {
    const auto *own = static_cast<const sdp_connection_t *>(osip_list_get(&media.c_connections, 0));
    const sdp_connection_t *connection = own != nullptr ? own : session.c_connection;
    const bool is_audio = view(media.m_media) == "audio";
    stream_fields &stream = is_audio ? f.audio : f.video;
    stream.ip = connection == nullptr ? std::string_view() : view(connection->c_addr);
    stream.port = std::atoi(media.m_port);
    for (int i = 0; i < osip_list_size(&media.m_payloads); ++i) {
        const char *payload = static_cast<const char *>(osip_list_get(&media.m_payloads, i));
        if (is_audio)
            stream.add_codec(codec_of(std::atoi(payload), encoding_name(media, payload)));
        else
            stream.add_payload(std::atoi(payload));
    }
}

void read_session(const sdp_message_t &session, fields &f) {
    for (int i = 0; i < osip_list_size(&session.m_medias); ++i)
        read_media(session, *static_cast<const sdp_media_t *>(osip_list_get(&session.m_medias, i)), f);
}

void read_headers(osip_message_t &message, fields &f) {
    f.method = view(message.sip_method);
    f.status = message.status_code;
    f.request_uri = uri_of(message.req_uri);
    f.call_id = view(message.call_id->number);
    f.call_id_host = view(message.call_id->host);
    f.cseq = std::atoi(message.cseq->number);
    f.cseq_method = view(message.cseq->method);
    read_vias(message, f);
    f.from = party_of(message.from);
    f.to = party_of(message.to);
    if (const auto *contact = static_cast<const osip_contact_t *>(osip_list_get(&message.contacts, 0)))
        f.contact = uri_of(contact->url);
    read_digest(message, f);
}

bool is_complete(const osip_message_t &message) {
    return message.call_id != nullptr && message.cseq != nullptr && message.from != nullptr && message.to != nullptr;
}

reader reader_of(const std::string &text) {
    return [text](const consumer &use) {
        fields f;
        const message_ptr message = parse_message(text);
        if (message == nullptr || !is_complete(*message))
            return use(f);
        read_headers(*message, f);
        const session_ptr session = parse_session(*message);
        if (session != nullptr)
            read_session(*session, f);
        if (message->status_code != 0)
            f.method = {};
        use(f);
    };
}

// Prints the session description from its own structure, sets it as the body, then prints the whole message.
class message_printer {
  public:
    explicit message_printer(const std::string &text)
        : message_(parse_message(text)), session_(parse_session(*message_)) {}
    ~message_printer() { osip_free(text_); }
    message_printer(const message_printer &) = delete;
    message_printer &operator=(const message_printer &) = delete;

    std::string_view print() {
        if (session_ != nullptr)
            print_session();
        osip_free(text_);
        std::size_t length = 0;
        message_->message_property = 2; // "changed": otherwise the text of the previous call is copied
        osip_message_to_str(message_.get(), &text_, &length);
        return {text_, length};
    }

  private:
    void print_session() {
        char *body = nullptr;
        sdp_message_to_str(session_.get(), &body);
        auto *old = static_cast<osip_body_t *>(osip_list_get(&message_->bodies, 0));
        osip_list_remove(&message_->bodies, 0);
        osip_body_free(old);
        osip_message_set_body(message_.get(), body, std::strlen(body));
        osip_free(body);
    }

    message_ptr message_;
    session_ptr session_;
    char *text_ = nullptr;
};

} // namespace

const peer osip2 = {"osip2", reader_of, printer_of<message_printer>};

} // namespace bench
