// Session description (RFC 4566) of a message with Content-Type application/sdp, into SIP_SDP.
//
//   c=IN IP4 10.0.0.5                         the first such line counts for every stream; without it nothing is read
//   m=audio 4000 RTP/AVP 0 8 101              a_use, a_addr, a_coders
//   m=video 4002 RTP/AVP 99                   v_use, v_addr, v_coders
//   m=image 4004 udptl t38                    fax_use, fax
//   bad:  m=audio 4000 RTP/AVP 0 x 8          logged, and nothing after it is read
//
// The body is read in two ways. c=, m=, rtpmap and T.38 are read from its lines. The direction, the packet time and the
// sections kept verbatim are read from its raw text, where a mark counts at any position.
#include <algorithm>
#include <cstdio>

#include "codecs.h"
#include "decoders.h"
#include "host.h"
#include "log.h"
#include "writer.h"

namespace sipcode {
namespace {

constexpr std::size_t longest_host = 256;
constexpr char line_end[] = "\r\n";

// ------------------------------------------------------------------------------------------------------------ codecs

constexpr auto codecs_by_payload = [] {
    std::array<e_codec, 19> codecs{};
    for (const audio_codec &row : audio_codecs)
        if (row.payload != dynamic_payload)
            codecs[static_cast<std::size_t>(row.payload)] = row.codec;
    codecs[second_dvi4_payload] = DVI4;
    return codecs;
}();

e_codec codec_of_payload(int payload) {
    const auto place = static_cast<unsigned>(payload);
    return place < codecs_by_payload.size() ? codecs_by_payload[place] : UNKONW;
}

struct dynamic_codec {
    e_codec codec;
    nocase encoding;
};
consteval dynamic_codec dynamic(e_codec codec) { return {codec, audio_codecs[codec - 1].encoding}; }
constexpr dynamic_codec dynamic_codecs[] = {dynamic(SPEEX), dynamic(ILBC), dynamic(TE101)};

// The codec whose encoding is the next word of the line.
e_codec codec_of_encoding(scanner items) {
    items.white_space();
    const padded_text line = items.rest();
    for (const dynamic_codec &known : dynamic_codecs) {
        const std::size_t length = known.encoding.size();
        if (starts_nocase(line, known.encoding) && (line.size() == length || is_white_space(line[length])))
            return known.codec;
    }
    return UNKONW;
}

// ------------------------------------------------------------------------------------------------------------- lines

bool Parse_Sdp_Fonud(message &msg) {
    constexpr nocase session_description = "application/sdp";
    const text type = msg.value(header::content_type, header::compact_content_type);
    if (!starts_nocase(message::padded(type), session_description))
        return false;
    msg.split().sdp_start = 0;
    msg.split().sdp_end = static_cast<unsigned>(msg.body_lines());
    return true;
}

// Takes lines out of the set up to the next one with a filled value. Returns the value without leading blanks, empty at
// the end.
inline padded_text Parse_Sdp_Iterate(line_set &lines, const message &msg) {
    while (lines != 0) {
        const text line = msg.body_line(take_first(lines));
        const char *value = line.data() + 2;
        while (is_blank(*value))
            ++value;
        if (*value != '\0')
            return {value, static_cast<std::size_t>(line.end() - value)};
    }
    return {};
}

// Calls read with the value of each of these lines until it returns false. Returns false if it did.
template <class Read>
bool for_each_line(line_set lines, const message &msg, Read read) {
    for (padded_text value = Parse_Sdp_Iterate(lines, msg); !value.empty(); value = Parse_Sdp_Iterate(lines, msg))
        if (!read(value))
            return false;
    return true;
}

// The address of "IN IP4 10.0.0.5"; empty for any other network or address type.
text connection_host(const message &msg, padded_text value) {
    scanner items(value);
    if (!items.literal("IN") || !items.white_space() || !items.literal("IP4"))
        return {};
    return msg.store.within(items.word(), longest_host);
}

// ------------------------------------------------------------------------------------------------------- media lines

constexpr char no_payloads[piece_size] = {}; // a list is read up to its terminator

// "audio 4000/2 RTP/AVP 0 8": the port, the payload list after the profile word, and the port count if there is one.
struct media_line {
    bool matches = false;
    int port = 0;
    padded_text payloads{no_payloads, 0};
};

// Whether a character after "RTP/AVP" makes it another profile, as in "RTP/AVPF". Letters do, and so do the marks that
// RFC 4566 allows in a word. Digits do not, since the list may begin with one.
constexpr auto goes_on_as_profile = [] {
    std::array<bool, 256> goes_on{};
    for (const char c : text("/!#$%&'*+-.^_`{|}~abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"))
        goes_on[static_cast<unsigned char>(c)] = true;
    return goes_on;
}();

// What follows the profile word, which may be a secure or a feedback profile. A line without the word has no list.
padded_text payload_list(scanner items) {
    items.white_space();
    if (const text rest = items.rest(); rest.empty() || is_digit(rest.front()))
        return {no_payloads, 0};
    if (scanner list = items;
        list.literal("RTP/AVP") && !goes_on_as_profile[static_cast<unsigned char>(*list.rest().data())])
        items = list; // "RTP/AVP0 8": no blank is needed there
    else
        items.word();
    items.white_space();
    return items.rest();
}

template <std::size_t N>
media_line read_media_line(padded_text value, const char (&media)[N], int &port_count) {
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

// State that lasts over all media lines of one description.
class media_reader {
  public:
    media_reader(SIP_SDP &target, const message &source, line_set codec_lines, text connection)
        : sdp(target), msg(source), codecs(codec_lines), host(connection) {}

    // Returns false if the line ends the decoding of the whole description.
    bool read(padded_text value) {
        if (const media_line audio = read_media_line(value, "audio", port_count); audio.matches) {
            if (!read_audio(audio))
                return false;
        } else if (const media_line video = read_media_line(value, "video", port_count); video.matches) {
            if (!read_video(video))
                return false;
        } else if (!read_fax(value)) {
            SIPCODE_TRACE(0, "Unsupported SDP media type in offer: %s", value.data());
        }
        // The count of an earlier line holds until another line gives one.
        if (port_count > 1)
            SIPCODE_TRACE(0, "SDP offered %d ports for media, not supported by Korvadex softswitch. Will try anyway...",
                          port_count);
        return true;
    }

  private:
    void store_address(IPV4_ADDRESS &addr, int port) const {
        addr.port = port;
        msg.store.put(addr.ip, host);
    }

    bool read_audio(const media_line &line) {
        sdp.a_use = 1;
        store_address(sdp.a_addr, line.port);
        for (scanner items(line.payloads); !items.at_end(); items.blanks()) {
            int payload = 0;
            if (!items.integer(payload)) {
                SIPCODE_TRACE(1, "Error in codec string '%s'", items.rest().data());
                return false;
            }
            if (audio_codecs == max_audio_codecs)
                break;
            if (const e_codec codec = codec_of_payload(payload); codec != UNKONW)
                sdp.a_coders[audio_codecs++] = codec;
        }
        Parse_Sdp_Rtpmap(audio_codecs);
        return true;
    }

    bool read_video(const media_line &line) {
        sdp.v_use = 1;
        store_address(sdp.v_addr, line.port);
        for (scanner items(line.payloads); !items.at_end() && video_payloads < max_video_payloads; items.blanks()) {
            int payload = 0;
            if (!items.integer(payload)) {
                SIPCODE_TRACE(0, "Error in codec string '%s'", items.rest().data());
                return false;
            }
            sdp.v_coders[video_payloads++] = payload;
        }
        return true;
    }

    bool read_fax(padded_text value) {
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
        for_each_line(codecs, msg, [&](padded_text value) {
            scanner items(value);
            int payload = 0;
            if (!items.literal("rtpmap:") || !items.integer(payload))
                return true;
            const e_codec codec = codec_of_encoding(items);
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
    line_set codecs;
    text host;
    int audio_codecs = 0;
    int video_payloads = 0;
    int port_count = 1;
};

// ----------------------------------------------------------------------------------------------------- raw body text

// One after the last SIP_MEDIA_DIRECTION.
constexpr int no_direction = SIP_MEDIA_INACTIVE + 1;

// In the order of precedence.
constexpr text direction_names[] = {"sendrecv", "sendonly", "recvonly", "inactive"};
constexpr std::size_t direction_line_length = std::size("a=sendrecv\r\n") - 1;

// The first eight characters of a terminated and padded text, as a number. They include the terminator of a shorter
// text, so it differs from every longer constant.
inline std::uint64_t beginning_of(const char *padded) { return load_word(padded, 8); }
constexpr std::uint64_t beginning_word(text constant) {
    return word_of(constant.data(), std::min<std::size_t>(constant.size(), 8));
}

// A constant of fewer than eight characters, compared with the beginning of a text.
struct short_beginning {
    constexpr short_beginning(text constant) : word(beginning_word(constant)), counted(first_bytes(constant.size())) {}
    constexpr bool matches(std::uint64_t beginning) const { return (beginning & counted) == word; }

    std::uint64_t word;
    std::uint64_t counted; // its bytes
};

// The part of a body after the first media line of a medium, up to the next media line.
class media_section {
  public:
    explicit constexpr media_section(text wanted_medium) : medium(wanted_medium) {}

    // Sees a media line: the text after "m=".
    void see_media(text after, std::uint64_t beginning) {
        if (found) {
            if (after.data() - media_mark >= begin && end == nullptr)
                end = after.data() - media_mark;
        } else if (medium.matches(beginning)) {
            found = true;
            if (const parts line = cut_at(after, line_end); line.found)
                begin = line.after.data();
        }
    }

    void see_direction(const char *place) { directed |= begin != nullptr && place >= begin && end == nullptr; }

    // The section; null if its media line is missing or has no line end.
    text of(text body) const {
        const char *const last = end != nullptr ? end : body.data() + body.size();
        return begin == nullptr ? text() : text(begin, static_cast<std::size_t>(last - begin));
    }

    bool has_direction() const { return directed; }

  private:
    static constexpr std::ptrdiff_t media_mark = 2; // characters of "m="

    short_beginning medium;
    bool found = false;
    bool directed = false;
    const char *begin = nullptr;
    const char *end = nullptr;
};

// What counts at any position in a body.
struct body_marks {
    const char *packet_time = nullptr; // after the first "a=ptime:"
    int media = no_direction;          // the first in the order of precedence
    bool silence = false;
    media_section audio{"audio"};
    media_section video{"video"};

    // Sees an attribute: the text after "a=". Its first letter rules out most of them.
    void see_attribute(const char *after) {
        constexpr text packet_time_name = "ptime:";
        constexpr text silence_name = "SilcenceSupp"; // spelling is part of the interface
        const std::uint64_t beginning = beginning_of(after);
        switch (*after) {
        case 's':
            see_direction(SIP_MEDIA_SENDRECV, beginning, after);
            see_direction(SIP_MEDIA_SENDONLY, beginning, after);
            break;
        case 'r':
            see_direction(SIP_MEDIA_RECVONLY, beginning, after);
            break;
        case 'i':
            see_direction(SIP_MEDIA_INACTIVE, beginning, after);
            break;
        case 'p':
            if (packet_time == nullptr && short_beginning(packet_time_name).matches(beginning))
                packet_time = after + packet_time_name.size();
            break;
        case 'S':
            silence |= beginning == beginning_word(silence_name) &&
                       std::strncmp(after, silence_name.data(), silence_name.size()) == 0;
            break;
        default:
            break;
        }
    }

  private:
    void see_direction(int direction, std::uint64_t beginning, const char *after) {
        if (beginning != beginning_word(direction_names[direction]))
            return;
        media = std::min(media, direction);
        audio.see_direction(after);
    }
};

// Every mark is found by its "=", the rarest of its bytes. The letter before it says which mark it is.
body_marks find_marks(text body) {
    static_assert(sizeof SIP_MSG::data >= block_size); // what follows the body in the split message
    body_marks marks;
    const auto see_mark = [&marks, body](const char *place) {
        const char *const after = place + 1;
        if (place[-1] == 'a') {
            marks.see_attribute(after);
        } else if (place[-1] == 'm') {
            const text rest(after, static_cast<std::size_t>(body.end() - after));
            const std::uint64_t beginning = beginning_of(after);
            marks.audio.see_media(rest, beginning);
            marks.video.see_media(rest, beginning);
        }
    };
    for_each_byte(body.begin() + 1, body.end(), '=', see_mark); // a letter comes first
    return marks;
}

void read_packet_time(const message &msg, text value, int &milliseconds) {
    constexpr std::size_t longest = 2; // 100 reads as 10
    milliseconds = Str_Atoi(terminated<longest>(value).c_str());
    const auto digits =
        static_cast<std::size_t>(std::find_if_not(value.begin(), value.end(), is_digit) - value.begin());
    if (digits > longest)
        msg.store.note_cut(&milliseconds, at_most(value, digits), longest);
}

void Parse_Sdp_Audio_Media(SIP_SDP *SDP, const message &msg, const body_marks &found) {
    if (found.packet_time != nullptr)
        read_packet_time(msg, found.packet_time, SDP->a_ptime);
    SDP->a_media = found.media == no_direction ? SIP_MEDIA_SENDRECV : found.media;
}

constexpr std::size_t longest_section = sizeof SIP_SDP::a_content - 1;
static_assert(sizeof SIP_SDP::v_content == sizeof SIP_SDP::a_content);

// As many whole lines of a section as fit together with a direction line.
text whole_lines(text section) {
    const std::size_t room = longest_section - direction_line_length;
    if (section.size() <= room)
        return section;
    return at_most(section, at_most(section, room).rfind('\n') + 1); // without a line end: npos + 1, nothing
}

void store_section(const message &msg, char (&content)[longest_section + 1], text section, text kept) {
    store(content, kept);
    if (kept.size() < section.size())
        msg.store.note_cut(content, section, kept.size());
}

void Parse_Sdp_Video_Content(SIP_SDP *SDP, const message &msg, const media_section &video) {
    const text section = video.of(msg.body());
    if (section.data() == nullptr)
        return;
    store_section(msg, SDP->v_content, section, section.size() <= longest_section ? section : whole_lines(section));
    constexpr text address_mark = "IN IP4 ";
    if (const std::size_t at = section.find(address_mark); at != text::npos) {
        terminated scratch(drop(section, at));
        char *cursor = scratch.data();
        if (const char *const address = Str_Two_Tok(&cursor, address_mark.data(), line_end); address != nullptr)
            msg.store.put(SDP->v_addr.ip, address);
    }
    std::printf("sdp video content=\n%s\n", SDP->v_content);
}

// The audio section is stored with a direction: its own, or the one of the whole body. A section that is cut leaves
// room for it.
void Parse_Sdp_Vbd_Content(SIP_SDP *SDP, const message &msg, const media_section &audio) {
    const text section = audio.of(msg.body());
    if (section.data() == nullptr)
        return;
    const bool fits = section.size() <= longest_section && audio.has_direction();
    const text kept = fits ? section : whole_lines(section);
    store_section(msg, SDP->a_content, section, kept);
    if (fits || find_marks(kept).media != no_direction)
        return;
    writer direction_line(SDP->a_content + kept.size(), direction_line_length + 1);
    direction_line.append("a=");
    direction_line.append(direction_names[SDP->a_media]);
    direction_line.append(line_end);
}

void Parse_Sdp_Bypass_Content(SIP_SDP *SDP, const body_marks &found) {
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

void read_fax_attribute(const message &msg, padded_text value, FAX_INFO &fax) {
    for (const fax_number &known : fax_numbers)
        if (scanner items(value); items.literal(known.name) && items.integer(fax.*known.member))
            return;
    for (const fax_text &known : fax_texts) {
        scanner items(value);
        if (!items.literal(known.name))
            continue;
        if (const text word = items.word(); !word.empty())
            msg.store.put(fax.*known.member, word);
        return;
    }
}

} // namespace

void Parse_Sdp(SIP_SDP *SDP, message &msg) {
    if (!Parse_Sdp_Fonud(msg))
        return;
    const session_lines &lines = msg.session();
    line_set connection_lines = lines.connection;
    const padded_text connection = Parse_Sdp_Iterate(connection_lines, msg);
    if (connection.empty()) {
        SIPCODE_TRACE(0, "Insufficient information for SDP ( c = '%s')", "");
        return;
    }
    const text host = connection_host(msg, connection);
    if (host.empty()) {
        SIPCODE_TRACE(0, "Invalid host in c= line, '%s'", connection.data());
        return;
    }

    media_reader media(*SDP, msg, lines.codecs, host);
    if (!for_each_line(lines.media, msg, [&](padded_text value) { return media.read(value); }))
        return;

    const body_marks found = find_marks(msg.body());
    Parse_Sdp_Audio_Media(SDP, msg, found);
    Parse_Sdp_Video_Content(SDP, msg, found.video);
    Parse_Sdp_Vbd_Content(SDP, msg, found.audio);
    Parse_Sdp_Bypass_Content(SDP, found);

    if (SDP->fax.udptlport > 0) {
        for_each_line(lines.attributes, msg, [&](padded_text value) {
            read_fax_attribute(msg, value, SDP->fax);
            return true;
        });
    }
}

} // namespace sipcode
