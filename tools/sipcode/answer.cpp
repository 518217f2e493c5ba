// The answer to a received request, see answer.h.
#include "answer.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <random>

#include <fmt/core.h>

#include "decode.h"
#include "encode.h"

namespace {

bool is_one_of(int method, std::initializer_list<int> methods) {
    return std::find(methods.begin(), methods.end(), method) != methods.end();
}

std::string why_unanswerable(const SIP_CODE_MSG &request) {
    if (request.method >= SIP_RESPONSE_MSG_100_TRY)
        return fmt::format("a response is not answered: {}", decode_methods[request.method].text);
    if (request.method < SIP_REQUEST_MSG_REGISTER || request.cseq.method < SIP_REQUEST_MSG_REGISTER ||
        request.cseq.method > SIP_REQUEST_MSG_PUBLISH)
        return "not a request with a method that the library knows";
    if (request.method == SIP_REQUEST_MSG_ACK)
        return "an ACK is not answered";
    if (request.via_count > 2)
        return fmt::format("{} Vias: the record holds at most two, so the answer would not find its way",
                           request.via_count);
    return "";
}

// What an answer repeats (RFC 3261 section 8.2.6.2).
void repeat(const SIP_CODE_MSG &request, SIP_CODE_MSG &answer) {
    answer.via_count = request.via_count;
    answer.via1 = request.via1;
    answer.via = request.via;
    answer.from = request.from;
    answer.to = request.to;
    answer.cseq = request.cseq;
    answer.record_route = request.record_route;
    std::copy(std::begin(request.callid), std::end(request.callid), answer.callid);
    std::copy(std::begin(request.korvadex), std::end(request.korvadex), answer.korvadex);
}

void set_to_tag(SIP_FROMTO &to, const AnswerSettings &settings) {
    if (!settings.to_tag.empty())
        Copy_String(to.tag, settings.to_tag.c_str(), sizeof to.tag);
    else if (to.tag[0] == '\0' && settings.status != SIP_RESPONSE_MSG_100_TRY)
        Build_Tag(to.tag);
    to.tag_use = to.tag[0] != '\0';
}

// The contact of this side, by default the request URI. The answer of a registrar gives the binding and its expiry
// instead, that of a notifier the expiry of the subscription.
void set_contact(const SIP_CODE_MSG &request, const AnswerSettings &settings, SIP_CODE_MSG &answer) {
    const bool is_ok = is_one_of(settings.status, {SIP_RESPONSE_MSG_200_OK, SIP_RESPONSE_MSG_202_OK});
    const bool is_register = request.method == SIP_REQUEST_MSG_REGISTER;
    const bool makes_dialog =
        is_one_of(request.method, {SIP_REQUEST_MSG_INVITE, SIP_REQUEST_MSG_UPDATE, SIP_REQUEST_MSG_SUBCRIBE,
                                   SIP_REQUEST_MSG_REFER, SIP_REQUEST_MSG_NOTIFY});
    const bool is_early = is_one_of(settings.status, {SIP_RESPONSE_MSG_180_RING, SIP_RESPONSE_MSG_181,
                                                      SIP_RESPONSE_MSG_182_RING, SIP_RESPONSE_MSG_183_RING});
    if (is_ok && (is_register || request.method == SIP_REQUEST_MSG_SUBCRIBE))
        answer.expire = request.expire;
    if (settings.contact) {
        answer.contact = *settings.contact;
    } else if (is_register && is_ok) {
        answer.contact = request.contact;
    } else if (makes_dialog && (is_ok || is_early)) {
        Copy_String(answer.contact.user, request.uri.user, sizeof answer.contact.user);
        answer.contact.addr = request.uri.addr;
    }
}

std::string new_nonce() {
    std::random_device random;
    return fmt::format("{:08x}{:08x}{:08x}{:08x}", random(), random(), random(), random());
}

void set_challenge(const SIP_CODE_MSG &request, const AnswerSettings &settings, SIP_AUTHEN &authen) {
    if (!is_one_of(settings.status,
                   {SIP_RESPONSE_MSG_401_UNAUTHORIZED, SIP_RESPONSE_MSG_407_PROXY_AUTHENTICATION_REQUIRED}))
        return;
    authen.use = 1;
    authen.authen_type = settings.status; // a 407 writes Proxy-Authenticate
    const std::string nonce = settings.nonce.empty() ? new_nonce() : settings.nonce;
    Copy_String(authen.realm, settings.realm.empty() ? request.uri.addr.ip : settings.realm.c_str(),
                sizeof authen.realm);
    Copy_String(authen.nonce, nonce.c_str(), sizeof authen.nonce);
}

// Takes the first audio codec of the offer, and telephone events if they are offered. Rejects a video stream.
bool answer_audio(const SIP_SDP &offer, const IPV4_ADDRESS &media, SIP_SDP &sdp) {
    const auto is_voice = [](e_codec codec) { return codec != UNKONW && codec != TE101; };
    const auto *const codec = std::find_if(std::begin(offer.a_coders), std::end(offer.a_coders), is_voice);
    if (codec == std::end(offer.a_coders))
        return false;
    sdp.a_use = 1;
    sdp.a_conten_nouse = 1;
    sdp.a_addr = media;
    sdp.a_ptime = offer.a_ptime;
    sdp.a_coders[0] = *codec;
    if (std::find(std::begin(offer.a_coders), std::end(offer.a_coders), TE101) != std::end(offer.a_coders))
        sdp.a_coders[1] = TE101;
    std::copy(std::begin(offer.rtpmap), std::end(offer.rtpmap), sdp.rtpmap);

    constexpr int mirrored[] = {0, 2, 1, 3}; // one side sends only, the other receives only
    sdp.a_media = mirrored[offer.a_media];

    sdp.v_use = offer.v_use;
    std::copy(std::begin(offer.v_coders), std::end(offer.v_coders), sdp.v_coders);
    return true;
}

void answer_fax(const SIP_SDP &offer, const IPV4_ADDRESS &media, SIP_SDP &sdp) {
    sdp.fax_use = 1;
    sdp.fax = offer.fax;
    sdp.fax.fax_addr = media;
    sdp.fax.udptlport = media.port;
}

std::string set_session(const SIP_SDP &offer, const AnswerSettings &settings, SIP_CODE_MSG &answer) {
    if (!settings.media)
        return "";
    if (offer.a_use == 1) {
        if (!answer_audio(offer, *settings.media, answer.sdp))
            return "no audio codec that the library knows is offered";
    } else if (offer.fax_use == 1) {
        answer_fax(offer, *settings.media, answer.sdp);
    } else {
        return "neither audio nor fax is offered";
    }
    answer.content.use = 1;
    Copy_String(answer.content.type, "application/sdp", sizeof answer.content.type);
    return "";
}

} // namespace

Answer answer(const SIP_CODE_MSG &request, const AnswerSettings &settings) {
    Answer made{};
    made.refusal = why_unanswerable(request);
    if (!made.refusal.empty())
        return made;
    SIP_CODE_MSG &record = made.record;
    record.method = settings.status;
    record.trans_type = settings.transport;
    repeat(request, record);
    set_to_tag(record.to, settings);
    set_contact(request, settings, record);
    set_challenge(request, settings, record.authen);
    made.refusal = set_session(request.sdp, settings, record);
    return made;
}
