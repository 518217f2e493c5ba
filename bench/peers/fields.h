// The values that every stack has to find in a message. The texts are views into the structures of the stack, so that
// no stack pays for a copy.
#ifndef SIPCODE_BENCH_FIELDS_H
#define SIPCODE_BENCH_FIELDS_H

#include <cstdlib>
#include <string>
#include <string_view>

#include <sipcode/code.h>

namespace bench {

constexpr int default_port = 5060;

struct uri_fields {
    std::string_view user, host;
    int port = 0;
};

struct party_fields {
    uri_fields uri;
    std::string_view tag;
};

struct via_fields {
    std::string_view host, branch;
    int port = 0;
};

struct stream_fields {
    std::string_view ip;
    int port = 0;
    int count = 0;
    int formats[8] = {}; // audio: e_codec; video: payload numbers, of which a record keeps four

    void add_codec(e_codec codec) {
        if (codec != UNKONW && count < 8)
            formats[count++] = codec;
    }
    void add_payload(int payload) {
        if (count < 4)
            formats[count++] = payload;
    }
};

struct digest_fields {
    std::string_view username, realm, nonce, uri, response; // a challenge has realm and nonce
};

struct fields {
    std::string_view method; // of a request
    int status = 0;          // of a response
    uri_fields request_uri;
    std::string_view call_id, call_id_host; // osip2 cuts the Call-ID at "@"
    int cseq = 0;
    std::string_view cseq_method;
    int via_count = 0;
    via_fields vias[2]; // topmost first
    party_fields from, to;
    uri_fields contact;
    digest_fields digest;
    stream_fields audio, video;

    via_fields *add_via() { return via_count < 2 ? &vias[via_count++] : nullptr; }
};

// The fields as lines of text, to compare them.
std::string shown(const fields &f);

fields fields_of(const SIP_CODE_MSG &record);

// The codec of a static payload number, or of the name that a=rtpmap gives a dynamic one.
e_codec codec_of(int payload, std::string_view name);

inline std::string_view view(const char *text) { return text == nullptr ? std::string_view() : text; }

inline int port_of(const char *text) { return text == nullptr ? default_port : std::atoi(text); }

inline std::string_view without_quotes(const char *text) {
    std::string_view value = view(text);
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
        value = value.substr(1, value.size() - 2);
    return value;
}

} // namespace bench

#endif
