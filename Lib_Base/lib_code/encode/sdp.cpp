// Session description (RFC 4566) of an outgoing message, from SIP_SDP.
//
// Each stream is written in one of two ways. If a_conten_nouse or v_conten_nouse is 1, its attributes are generated
// from the codecs, the packet time and the direction. Otherwise its content text is written, as the decoder took it
// from a received description. In a fax session (fax_use 1) the audio media line is omitted, and the session uses the
// fax address.
#include <algorithm>

#include "codecs.h"
#include "lines.h"

namespace sipcode {
namespace {

constexpr int max_video_payloads = 4;

struct video_encoding {
    int payload;
    char encoding[24];
};
constexpr video_encoding video_encodings[] = {
    {99, "H264/90000"},  {34, "H263/90000"},  {31, "H261/90000"},
    {109, "H264/90000"}, {103, "H263/90000"}, {96, "H263/90000"},
};

// Null for an empty slot and for any value outside the table.
const audio_codec *find_codec(e_codec codec) {
    const bool known = codec > UNKONW && codec < SIP_CODE_CODEC_COUNT;
    return known ? &audio_codecs[codec - 1] : nullptr;
}

// Calls write with the payload number of every dynamic entry of this codec.
template <class Write>
void for_each_dynamic(const SIP_SDP &sdp, e_codec codec, Write write) {
    for (const CODEC_RTPMAP &entry : sdp.rtpmap)
        if (entry.a_coder == codec)
            write(entry.a_payload);
}

template <std::size_t N>
void write_rtpmap(writer &out, int payload, const char (&encoding)[N]) {
    out.line<"a=rtpmap:%d %s\r\n">(payload, encoding);
}

void write_direction(writer &out, int media, const char (&ip)[24]) {
    const bool is_held = media != SIP_MEDIA_SENDRECV && same_text(ip, "0.0.0.0"); // the hold address only sends
    if (media == SIP_MEDIA_SENDONLY || is_held)
        out.line<"a=sendonly\r\n">();
    else if (media == SIP_MEDIA_RECVONLY)
        out.line<"a=recvonly\r\n">();
    else if (media == SIP_MEDIA_INACTIVE)
        out.line<"a=inactive\r\n">();
    else
        out.line<"a=sendrecv\r\n">();
}

void write_connection(writer &out, const char (&ip)[24]) { out.line<"c=IN IP4 %s\r\n">(ip); }

void write_origin(writer &out, const SIP_SDP &sdp) {
    if (sdp.fax_use == 1)
        out.line<"o=Softswitch 1073741824 1073741825 IN IP4 %s\r\n">(sdp.fax.fax_addr.ip);
    else if (sdp.o_sec <= 0)
        out.line<"o=Softswitch 1073741824 1073741825 IN IP4 %s\r\n">(sdp.a_addr.ip);
    else
        out.line<"o=Softswitch 1073741824 %d IN IP4 %s\r\n">(sdp.o_sec, sdp.a_addr.ip);
}

// Returns true if the connection line applies to all streams. That of a fax session does not.
bool write_session_connection(writer &out, const SIP_SDP &sdp) {
    if (sdp.fax_use == 1) {
        write_connection(out, sdp.fax.fax_addr.ip);
        return false;
    }
    if (sdp.v_addr.ip[0] != '\0' && !same_text(sdp.v_addr.ip, sdp.a_addr.ip))
        return false;
    write_connection(out, sdp.a_addr.ip);
    return true;
}

void write_audio_media_line(writer &out, SIP_SDP &sdp) {
    out.line<"m=audio %d RTP/AVP">(sdp.a_addr.port);
    BuildDefaultSdp(&sdp);
    for (const e_codec codec : sdp.a_coders) {
        if (codec == UNKONW)
            continue;
        if (const audio_codec *const known = find_codec(codec); known != nullptr && known->payload != dynamic_payload)
            out.line<" %d">(known->payload);
        for_each_dynamic(sdp, codec, [&out](int payload) { out.line<" %d">(payload); });
    }
    out.line<"\r\n">();
}

void write_generated_audio(writer &out, const SIP_SDP &sdp, bool session_connection) {
    if (!session_connection)
        write_connection(out, sdp.a_addr.ip);
    for (const e_codec codec : sdp.a_coders) {
        const audio_codec *const known = find_codec(codec);
        if (known == nullptr)
            continue;
        if (known->payload != dynamic_payload)
            write_rtpmap(out, known->payload, known->encoding);
        else
            for_each_dynamic(sdp, codec, [&](int payload) { write_rtpmap(out, payload, known->encoding); });
    }
    if (sdp.a_ptime > 0)
        out.line<"a=ptime:%d\r\n">(sdp.a_ptime);
    write_direction(out, sdp.a_media, sdp.a_addr.ip);
    out.append(member_text(sdp.a_content));
}

void write_video_media_line(writer &out, const SIP_SDP &sdp) {
    out.line<"m=video %d RTP/AVP">(sdp.v_addr.port);
    for (int slot = 0; slot < max_video_payloads; ++slot)
        if (sdp.v_coders[slot] > 0)
            out.line<" %d">(sdp.v_coders[slot]);
    out.line<"\r\n">();
}

void write_generated_video(writer &out, const SIP_SDP &sdp, bool session_connection) {
    if (!session_connection)
        write_connection(out, sdp.v_addr.ip);
    for (int slot = 0; slot < max_video_payloads; ++slot)
        for (const video_encoding &known : video_encodings)
            if (known.payload == sdp.v_coders[slot])
                write_rtpmap(out, known.payload, known.encoding);
    write_direction(out, sdp.v_media, sdp.v_addr.ip);
    out.append(member_text(sdp.v_content));
}

// The content text of a stream. It gets its own connection line if neither the session nor the text has one and the
// streams go to different addresses.
void write_content(writer &out, const SIP_SDP &sdp, bool session_connection, int use, const char (&ip)[24],
                   text content) {
    if (use == 1 && ip[0] != '\0' && !session_connection && content.find("c=") == text::npos &&
        !same_text(sdp.v_addr.ip, sdp.a_addr.ip))
        write_connection(out, ip);
    out.append(content);
}

void write_fax(writer &out, const FAX_INFO &fax) {
    out.line<"m=image %d udptl t38\r\n">(fax.udptlport);
    out.line<"a=T38FaxVersion:%d\r\n">(fax.T38FaxVersion);
    out.line<"a=T38MaxBitRate:%d\r\n">(fax.T38MaxBitRate);
    out.line<"a=T38FaxFillBitRemoval:%d\r\n">(fax.T38FaxFillBitRemoval);
    out.line<"a=T38FaxTranscodingMMR:%d\r\n">(fax.T38FaxTranscodingMMR);
    out.line<"a=T38FaxTranscodingJBIG:%d\r\n">(fax.T38FaxTranscodingJBIG);
    out.line<"a=T38FaxRateManagement:%s\r\n">(fax.T38FaxRateManagement);
    out.line<"a=T38FaxMaxDatagram:%d\r\n">(fax.T38FaxMaxDatagram);
    out.line<"a=T38FaxUdpEC:%s\r\n">(fax.T38FaxUdpEC);
}

} // namespace

void Bulid_Sdp(writer &out, SIP_SDP &sdp) {
    out.line<"v=0\r\n">();
    write_origin(out, sdp);
    out.line<"s=1\r\n">();
    const bool session_connection = write_session_connection(out, sdp);
    out.line<"t=0 0\r\n">();
    if (sdp.a_use == 1 && sdp.fax_use != 1)
        write_audio_media_line(out, sdp);
    if (sdp.a_use == 1 && sdp.a_conten_nouse == 1)
        write_generated_audio(out, sdp, session_connection);
    else
        write_content(out, sdp, session_connection, sdp.a_use, sdp.a_addr.ip, member_text(sdp.a_content));
    if (sdp.v_use == 1)
        write_video_media_line(out, sdp);
    if (sdp.v_use == 1 && sdp.v_conten_nouse == 1)
        write_generated_video(out, sdp, session_connection);
    else
        write_content(out, sdp, session_connection, sdp.v_use, sdp.v_addr.ip, member_text(sdp.v_content));
    if (sdp.fax_use == 1)
        write_fax(out, sdp.fax);
}

} // namespace sipcode

void BuildDefaultSdp(SIP_SDP *sdp) {
    constexpr int telephone_event_payload = 101;
    if (std::find(std::begin(sdp->a_coders), std::end(sdp->a_coders), TE101) == std::end(sdp->a_coders))
        return;
    const auto find_entry = [sdp](e_codec codec) {
        return std::find_if(std::begin(sdp->rtpmap), std::end(sdp->rtpmap),
                            [codec](const CODEC_RTPMAP &entry) { return entry.a_coder == codec; });
    };
    if (auto *const entry = find_entry(TE101); entry != std::end(sdp->rtpmap)) {
        if (entry->a_payload == 0)
            entry->a_payload = telephone_event_payload;
    } else if (auto *const unused = find_entry(UNKONW); unused != std::end(sdp->rtpmap)) {
        *unused = {TE101, telephone_event_payload};
    }
}
