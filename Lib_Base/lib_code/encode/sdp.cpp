// Session description (RFC 4566) of an outgoing message, from SIP_SDP.
//
// Each stream is written in one of two ways. Generated (a_conten_nouse, v_conten_nouse 1): its attributes are made from the
// codecs, the packet time and the direction. Otherwise its content text stands for them, as the decoder took it out of a
// received description. In a fax session (fax_use 1) the audio media line is left out and the fax address leads.
#include "lines.h"

#include <algorithm>

namespace sipcode {
namespace {

constexpr int max_video_payloads = 4;

struct static_codec {
    e_codec codec;
    char payload[8]; // put in one block
    text rtpmap;
};
constexpr static_codec static_codecs[] = {
    {G711_A, " 8", "a=rtpmap:8 PCMA/8000\r\n"}, {G711_U, " 0", "a=rtpmap:0 PCMU/8000\r\n"},
    {G729, " 18", "a=rtpmap:18 G729/8000\r\n"}, {G723, " 4", "a=rtpmap:4 G723/8000\r\n"},
    {GSM, " 3", "a=rtpmap:3 GSM/8000\r\n"},     {G726, " 2", "a=rtpmap:2 G726-32\r\n"},
    {G722, " 9", "a=rtpmap:9 G722/8000\r\n"},   {DVI4, " 5", "a=rtpmap:5 dvi4/8000\r\n"},
};

struct video_rtpmap {
    int payload;
    text rtpmap;
};
constexpr video_rtpmap video_rtpmaps[] = {
    {99, "a=rtpmap:99 H264/90000\r\n"},   {34, "a=rtpmap:34 H263/90000\r\n"},   {31, "a=rtpmap:31 H261/90000\r\n"},
    {109, "a=rtpmap:109 H264/90000\r\n"}, {103, "a=rtpmap:103 H263/90000\r\n"}, {96, "a=rtpmap:96 H263/90000\r\n"},
};

// By codec: its place among the static ones, or their number when it is none.
constexpr auto codec_places = [] {
    std::array<std::size_t, DVI4 + 1> places{};
    places.fill(std::size(static_codecs));
    for (std::size_t i = 0; i < std::size(static_codecs); ++i)
        places[static_cast<std::size_t>(static_codecs[i].codec)] = i;
    return places;
}();

const static_codec *find_static(e_codec codec) {
    const auto number = static_cast<unsigned>(codec); // wild ones too
    const std::size_t place = number < codec_places.size() ? codec_places[number] : std::size(static_codecs);
    return place < std::size(static_codecs) ? &static_codecs[place] : nullptr;
}

// Calls write with the payload number of every dynamic entry of this codec.
template <class Write>
void for_each_dynamic(const SIP_SDP &sdp, e_codec codec, Write write) {
    if (codec == UNKONW)
        return;
    for (const CODEC_RTPMAP &entry : sdp.rtpmap)
        if (entry.a_coder == codec)
            write(entry.a_payload);
}

void write_dynamic_rtpmap(writer &out, e_codec codec, int payload) {
    switch (codec) {
    case SPEEX:
        return out.line<"a=rtpmap:%d speex/8000\r\n">(payload);
    case ILBC:
        return out.line<"a=rtpmap:%d ilbc/8000\r\n">(payload);
    case TE101:
        return out.line<"a=rtpmap:%d telephone-event/8000\r\n">(payload);
    default:
        return;
    }
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

// True when one connection line now stands for all streams. That of a fax session does not.
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
        if (const static_codec *const known = find_static(codec); known != nullptr)
            out.line<"%s">(known->payload);
        for_each_dynamic(sdp, codec, [&out](int payload) { out.line<" %d">(payload); });
    }
    out.line<"\r\n">();
}

void write_generated_audio(writer &out, const SIP_SDP &sdp, bool session_connection) {
    if (!session_connection)
        write_connection(out, sdp.a_addr.ip);
    for (const e_codec codec : sdp.a_coders) {
        if (const static_codec *const known = find_static(codec); known != nullptr)
            out.append(known->rtpmap);
        for_each_dynamic(sdp, codec, [&out, codec](int payload) { write_dynamic_rtpmap(out, codec, payload); });
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
        for (const video_rtpmap &known : video_rtpmaps)
            if (known.payload == sdp.v_coders[slot])
                out.append(known.rtpmap);
    write_direction(out, sdp.v_media, sdp.v_addr.ip);
    out.append(member_text(sdp.v_content));
}

// The content text of a stream, behind a connection line of its own where neither the session nor the text has one and the
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
