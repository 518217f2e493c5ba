// Session description (RFC 4566) of a message with Content-Type application/sdp, into SIP_SDP.
//
//   c=IN IP4 10.0.0.5                         the first such line serves every stream; without one nothing is read
//   m=audio 4000 RTP/AVP 0 8 101              a_use, a_addr, a_coders
//   m=video 4002 RTP/AVP 99                   v_use, v_addr, v_coders
//   m=image 4004 udptl t38                    fax_use, fax
//   bad:  m=audio 4000 RTP/AVP 0 x 8          logged, and nothing behind it is read
//
// Two views of the body are read: its lines, for c=, m=, rtpmap and T.38, and its raw text, for the direction, the packet
// time and the sections kept verbatim. What the raw text is searched for counts wherever it stands.
#include <algorithm>
#include <cstdio>

#include "decoders.h"
#include "host.h"
#include "log.h"
#include "output.h"

namespace sipcode {
namespace {

constexpr std::size_t longest_host = 256;
constexpr text line_end = "\r\n";

// ------------------------------------------------------------------------------------------------------------ codecs

struct static_payload {
    int payload;
    e_codec codec;
};
constexpr static_payload static_payloads[] = {
    {8, G711_A}, {0, G711_U}, {18, G729}, {4, G723}, {3, GSM}, {2, G726}, {9, G722}, {5, DVI4}, {6, DVI4},
};

struct dynamic_encoding {
    nocase encoding; // clock rate included
    e_codec codec;
};
constexpr dynamic_encoding dynamic_encodings[] = {
    {"speex/8000", SPEEX},
    {"ilbc/8000", ILBC},
    {"telephone-event/8000", TE101},
};

e_codec codec_of_payload(int payload) {
    for (const static_payload &known : static_payloads)
        if (known.payload == payload)
            return known.codec;
    return UNKONW;
}

e_codec codec_of_encoding(text encoding) {
    for (const dynamic_encoding &known : dynamic_encodings)
        if (equals_nocase(encoding, known.encoding))
            return known.codec;
    return UNKONW;
}

// ------------------------------------------------------------------------------------------------------------- lines

bool Parse_Sdp_Fonud(const message &msg) {
    if (!starts_nocase(msg.value(header::content_type, header::compact_content_type), "application/sdp"))
        return false;
    msg.split.sdp_start = 0;
    msg.split.sdp_end = static_cast<unsigned>(msg.body_lines());
    return true;
}

// The value of a line of this type, behind leading blanks; empty when the line is another.
text value_of_line(text line, char type) {
    if (line.size() < 2 || lower(line[0]) != type || line[1] != '=')
        return {};
    return skip_blanks(drop(2, line));
}

// The next filled value of a line of this type at or behind `start`, which moves behind it; empty at the end.
text Parse_Sdp_Iterate(unsigned &start, const message &msg, char type) {
    while (start < msg.split.sdp_end) {
        const text value = value_of_line(msg.body_line(static_cast<int>(start++)), type);
        if (!value.empty())
            return value;
    }
    return {};
}

// Calls read with the value of every line of this type, until it returns false. False when it did.
template <class Read>
bool for_each_line(const message &msg, char type, Read read) {
    unsigned next = msg.split.sdp_start;
    for (text value = Parse_Sdp_Iterate(next, msg, type); !value.empty(); value = Parse_Sdp_Iterate(next, msg, type))
        if (!read(value))
            return false;
    return true;
}

// The address of "IN IP4 10.0.0.5"; empty for any other network or address type.
text connection_host(text value) {
    scanner items(value);
    if (!items.literal("IN") || !items.white_space() || !items.literal("IP4"))
        return {};
    return at_most(longest_host, items.word());
}

// ------------------------------------------------------------------------------------------------------- media lines

// "audio 4000/2 RTP/AVP 0 8": the port, the payload list behind the profile word, and the port count when there is one.
struct media_line {
    bool matches = false;
    int port = 0;
    text payloads;
};

// What follows the profile word, secure and feedback profiles included; a line without one has no list.
text payload_list(scanner items) {
    constexpr text plain_profile = "RTP/AVP";
    items.white_space();
    const text rest = items.rest();
    if (rest.empty() || is_digit(rest.front()))
        return {};
    if (const text behind = drop(plain_profile.size(), rest);
        rest.starts_with(plain_profile) && !behind.empty() && is_digit(behind.front()))
        return behind; // "RTP/AVP0 8": no blank is needed there
    items.word();
    items.white_space();
    return items.rest();
}

media_line read_media_line(text value, text media, int &port_count) {
    media_line line;
    scanner items(value);
    line.matches = items.literal(media) && items.white_space() && items.integer(line.port);
    if (!line.matches)
        return line;
    scanner count = items;
    int ports = 0;
    if (count.literal("/") && count.integer(ports)) {
        port_count = ports;
        items = count;
    }
    line.payloads = payload_list(items);
    return line;
}

// What lives across all media lines of one description.
class media_reader {
  public:
    media_reader(SIP_SDP &target, const message &source, text connection)
        : sdp(target), msg(source), host(connection) {}

    // False when the line ends the whole decoding.
    bool read(text value) {
        if (const media_line audio = read_media_line(value, "audio", port_count); audio.matches) {
            if (!read_audio(audio))
                return false;
        } else if (const media_line video = read_media_line(value, "video", port_count); video.matches) {
            if (!read_video(video))
                return false;
        } else if (!read_fax(value)) {
            SIPCODE_TRACE(0, "Unsupported SDP media type in offer: %s", value.data());
        }
        // The count of an earlier line stands until another line gives one.
        if (port_count > 1)
            SIPCODE_TRACE(0, "SDP offered %d ports for media, not supported by Korvadex softswitch. Will try anyway...",
                          port_count);
        return true;
    }

  private:
    void store_address(IPV4_ADDRESS &addr, int port) const {
        addr.port = port;
        store(addr.ip, host);
    }

    bool read_audio(const media_line &line) {
        sdp.a_use = 1;
        store_address(sdp.a_addr, line.port);
        for (text rest = line.payloads; !rest.empty();) {
            const number payload = read_number(rest);
            if (payload.length == 0) {
                SIPCODE_TRACE(1, "Error in codec string '%s'", rest.data());
                return false;
            }
            if (audio_codecs == max_audio_codecs)
                break;
            if (const e_codec codec = codec_of_payload(payload.value); codec != UNKONW)
                sdp.a_coders[audio_codecs++] = codec;
            rest = skip_blanks(drop(payload.length, rest));
        }
        Parse_Sdp_Rtpmap(audio_codecs);
        return true;
    }

    bool read_video(const media_line &line) {
        sdp.v_use = 1;
        store_address(sdp.v_addr, line.port);
        for (text rest = line.payloads; !rest.empty() && video_payloads < max_video_payloads;) {
            const number payload = read_number(rest);
            if (payload.length == 0) {
                SIPCODE_TRACE(0, "Error in codec string '%s'", rest.data());
                return false;
            }
            sdp.v_coders[video_payloads++] = payload.value;
            rest = skip_blanks(drop(payload.length, rest));
        }
        return true;
    }

    bool read_fax(text value) {
        scanner items(value);
        int port = 0;
        if (!items.literal("image") || !items.white_space() || !items.integer(port))
            return false;
        sdp.fax_use = 1;
        sdp.fax.udptlport = port;
        store_address(sdp.fax.fax_addr, port);
        return true;
    }

    // Dynamic codecs follow the static ones, whatever their place in the payload list and whichever section names them.
    void Parse_Sdp_Rtpmap(int index) {
        int entry = 0;
        for_each_line(msg, 'a', [&](text value) {
            scanner items(value);
            int payload = 0;
            if (!items.literal("rtpmap:") || !items.integer(payload))
                return true;
            const e_codec codec = codec_of_encoding(items.word());
            if (codec == UNKONW)
                return true;
            if (index < max_audio_codecs)
                sdp.a_coders[index++] = codec;
            if (entry < max_rtpmaps)
                sdp.rtpmap[entry++] = {codec, payload};
            return true;
        });
    }

    static constexpr int max_audio_codecs = sizeof SIP_SDP::a_coders / sizeof SIP_SDP::a_coders[0];
    static constexpr int max_video_payloads = 4;
    static constexpr int max_rtpmaps = sizeof SIP_SDP::rtpmap / sizeof SIP_SDP::rtpmap[0];

    SIP_SDP &sdp;
    const message &msg;
    text host;
    int audio_codecs = 0;
    int video_payloads = 0;
    int port_count = 1;
};

// ----------------------------------------------------------------------------------------------------- raw body text

// A place in a body is told by its "=" alone, the rarest byte of what the body is searched for: "a=sendonly", "m=audio".
// Calls visit(behind) with the text behind every "=" that follows this letter, until it returns true.
template <class Visit>
void for_each_assignment(text t, char letter, Visit visit) {
    for (parts cut = cut_at('=', t); cut.found; cut = cut_at('=', cut.after))
        if (!cut.before.empty() && cut.before.back() == letter && visit(cut.after))
            return;
}

// The text behind the first "m=" and this medium; null when there is none.
text find_media(text t, text medium) {
    text found;
    for_each_assignment(t, 'm', [&](text behind) {
        const bool matches = behind.starts_with(medium);
        if (matches)
            found = drop(medium.size(), behind);
        return matches;
    });
    return found;
}

enum direction { sendrecv = 0, sendonly = 1, recvonly = 2, inactive = 3 };

// In the order of precedence.
constexpr text direction_names[] = {"sendrecv", "sendonly", "recvonly", "inactive"};
constexpr std::size_t direction_line_length = std::size("a=sendrecv\r\n") - 1;

// What a text holds of the attributes that count wherever they stand.
struct attributes {
    text packet_time; // behind the first "a=ptime:", null when there is none
    std::array<bool, std::size(direction_names)> has = {};
    bool silence = false;

    bool has_direction() const { return std::find(has.begin(), has.end(), true) != has.end(); }

    // The first in the order of precedence, sendrecv when none is given.
    int media() const {
        const auto first = std::find(has.begin(), has.end(), true);
        return first != has.end() ? static_cast<int>(first - has.begin()) : sendrecv;
    }
};

attributes find_attributes(text t) {
    attributes found;
    for_each_assignment(t, 'a', [&found](text behind) {
        constexpr text packet_time = "ptime:";
        found.has[sendrecv] |= behind.starts_with("sendrecv");
        found.has[sendonly] |= behind.starts_with("sendonly");
        found.has[recvonly] |= behind.starts_with("recvonly");
        found.has[inactive] |= behind.starts_with("inactive");
        found.silence |= behind.starts_with("SilcenceSupp"); // spelling is part of the interface
        if (found.packet_time.data() == nullptr && behind.starts_with(packet_time))
            found.packet_time = drop(packet_time.size(), behind);
        return false;
    });
    return found;
}

void Parse_Sdp_Audio_Media(SIP_SDP *SDP, const attributes &found) {
    if (found.packet_time.data() != nullptr) {
        char digits[8]; // no more than two are read: 100 is taken as 10
        store(digits, at_most(2, found.packet_time));
        SDP->a_ptime = Str_Atoi(digits);
    }
    SDP->a_media = found.media();
}

// The text behind the first media line of this medium, up to the next media line; null without a whole such line.
text media_section(text body, text medium) {
    const parts line = cut_at(line_end, find_media(body, medium));
    if (!line.found)
        return {};
    const text behind = line.after;
    std::size_t length = behind.size();
    for_each_assignment(behind, 'm', [&](text next) {
        length = static_cast<std::size_t>(next.data() - behind.data()) - 2;
        return true;
    });
    return at_most(length, behind);
}

constexpr std::size_t longest_section = sizeof SIP_SDP::a_content - 1;
static_assert(sizeof SIP_SDP::v_content == sizeof SIP_SDP::a_content);

// As many whole lines of a section as fit with room for a direction line behind them.
text whole_lines(text section) {
    const std::size_t room = longest_section - direction_line_length;
    if (section.size() <= room)
        return section;
    return at_most(at_most(room, section).rfind('\n') + 1, section); // without a line end: npos + 1, nothing
}

void Parse_Sdp_Video_Content(SIP_SDP *SDP, text body) {
    const text section = media_section(body, "video");
    if (section.data() == nullptr)
        return;
    store(SDP->v_content, section.size() <= longest_section ? section : whole_lines(section));
    constexpr text address_mark = "IN IP4 ";
    if (const std::size_t at = section.find(address_mark); at != text::npos) {
        terminated scratch(drop(at, section));
        char *cursor = scratch.data();
        if (const char *const address = Str_Two_Tok(&cursor, address_mark.data(), line_end.data()); address != nullptr)
            store(SDP->v_addr.ip, address);
    }
    std::printf("sdp video content=\n%s\n", SDP->v_content);
}

// The audio section travels with a direction, its own or the one that holds for the whole body. A section that is cut keeps
// room for it.
void Parse_Sdp_Vbd_Content(SIP_SDP *SDP, text body) {
    const text section = media_section(body, "audio");
    if (section.data() == nullptr)
        return;
    const bool fits = section.size() <= longest_section && find_attributes(section).has_direction();
    const text kept = fits ? section : whole_lines(section);
    store(SDP->a_content, kept);
    if (fits || find_attributes(kept).has_direction())
        return;
    writer direction_line(SDP->a_content + kept.size(), direction_line_length + 1);
    direction_line.line<"a=%s\r\n">(direction_names[SDP->a_media]);
}

void Parse_Sdp_Bypass_Content(SIP_SDP *SDP, const attributes &found) {
    if (found.silence)
        SDP->fax_use = 2;
}

// -------------------------------------------------------------------------------------------------------------- T.38

struct fax_number {
    text name;
    int FAX_INFO::*member;
};
constexpr fax_number fax_numbers[] = {
    {"T38FaxMaxBuffer:", &FAX_INFO::T38FaxMaxBuffer},
    {"T38MaxBitRate:", &FAX_INFO::T38MaxBitRate},
    {"T38FaxVersion:", &FAX_INFO::T38FaxVersion},
    {"T38FaxMaxDatagram:", &FAX_INFO::T38FaxMaxDatagram},
    {"T38FaxFillBitRemoval:", &FAX_INFO::T38FaxFillBitRemoval},
    {"T38FaxTranscodingMMR:", &FAX_INFO::T38FaxTranscodingMMR},
    {"T38FaxTranscodingJBIG:", &FAX_INFO::T38FaxTranscodingJBIG},
};

struct fax_text {
    text name;
    char (FAX_INFO::*member)[32];
};
constexpr fax_text fax_texts[] = {
    {"T38FaxRateManagement:", &FAX_INFO::T38FaxRateManagement},
    {"T38FaxUdpEC:", &FAX_INFO::T38FaxUdpEC},
};

void read_fax_attribute(text value, FAX_INFO &fax) {
    for (const fax_number &known : fax_numbers)
        if (scanner items(value); items.literal(known.name) && items.integer(fax.*known.member))
            return;
    for (const fax_text &known : fax_texts) {
        scanner items(value);
        if (!items.literal(known.name))
            continue;
        if (const text word = items.word(); !word.empty())
            store(fax.*known.member, word);
        return;
    }
}

} // namespace

void Parse_Sdp(SIP_SDP *SDP, const message &msg) {
    if (!Parse_Sdp_Fonud(msg))
        return;
    unsigned first = msg.split.sdp_start;
    const text connection = Parse_Sdp_Iterate(first, msg, 'c');
    if (connection.empty()) {
        SIPCODE_TRACE(0, "Insufficient information for SDP ( c = '%s')", "");
        return;
    }
    const text host = connection_host(connection);
    if (host.empty()) {
        SIPCODE_TRACE(0, "Invalid host in c= line, '%s'", connection.data());
        return;
    }

    media_reader media(*SDP, msg, host);
    if (!for_each_line(msg, 'm', [&](text value) { return media.read(value); }))
        return;

    const text body = msg.body();
    const attributes found = find_attributes(body);
    Parse_Sdp_Audio_Media(SDP, found);
    Parse_Sdp_Video_Content(SDP, body);
    Parse_Sdp_Vbd_Content(SDP, body);
    Parse_Sdp_Bypass_Content(SDP, found);

    if (SDP->fax.udptlport > 0) {
        for_each_line(msg, 'a', [&](text value) {
            read_fax_attribute(value, SDP->fax);
            return true;
        });
    }
}

} // namespace sipcode
