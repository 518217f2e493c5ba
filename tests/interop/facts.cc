#include "facts.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <chrono>
#include <ctime>
#include <regex>
#include <set>
#include <sstream>

#include <fmt/core.h>

#include "record.h"

namespace interop {

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

// --------------------------------------------------------------------------------------------------------- the record
namespace {

bool ends_with_one_of(std::string_view text, std::initializer_list<std::string_view> endings) {
    return std::any_of(endings.begin(), endings.end(), [text](std::string_view end) { return text.ends_with(end); });
}

void erase_below(Facts &facts, const std::string &prefix) {
    std::erase_if(facts, [&prefix](const auto &fact) { return fact.first.starts_with(prefix); });
}

// Every member that the record holds, as text; numbers that stand for something by its name.
Facts members_of(const SIP_CODE_MSG &record) {
    Facts facts;
    sipcode::for_each_leaf(record, [&facts](const sipcode::Leaf<const std::byte> &leaf) {
        if (!leaf.present || leaf.member.kind == sipcode::Kind::pointer)
            return;
        const auto name = sipcode::value_name_of(leaf.member, leaf.element);
        facts.emplace(leaf.path, leaf.member.kind == sipcode::Kind::text
                                     ? std::string(sipcode::text_of(leaf.member, leaf.element))
                                 : !name.empty() ? std::string(name)
                                                 : std::to_string(sipcode::number_of(leaf.member, leaf.element)));
    });
    return facts;
}

// A host name stands for address and port.
void use_host_name(Facts &facts, const std::string &party, const DNS_ADDR &dns) {
    if (dns.use == 1) {
        facts[party + ".addr.ip"] = dns.dnsname;
        facts.erase(party + ".addr.port");
    }
    erase_below(facts, party + ".dns.");
}

void copy_below(Facts &facts, const std::string &from, const std::string &to) {
    for (const auto &[key, value] : Facts(facts))
        if (key.starts_with(from))
            facts[to + key.substr(from.size())] = value;
}

void add_display(Facts &facts, const std::string &party) {
    const auto user = facts.find(party + ".user");
    if (user != facts.end())
        facts[party + ".display"] = user->second;
}

void put_rtpmap(Facts &facts, int entry, const std::string &codec, const std::string &payload) {
    facts[fmt::format("sdp.rtpmap[{}].a_coder", entry)] = codec;
    facts[fmt::format("sdp.rtpmap[{}].a_payload", entry)] = payload;
}

void say_session(Facts &facts, const SIP_SDP &sdp) {
    if (sdp.a_use != 1)
        erase_below(facts, "sdp.a_");
    if (sdp.v_use != 1)
        erase_below(facts, "sdp.v_");
    else
        facts.try_emplace("sdp.v_media", "sendrecv");
    if (sdp.fax_use != 1)
        erase_below(facts, "sdp.fax");
    else
        facts.erase("sdp.fax.fax_addr.port"); // udptlport stands for it
    if (sdp.a_conten_nouse == 1)
        facts.erase("sdp.a_content");

    // An entry counts when its codec is offered.
    erase_below(facts, "sdp.rtpmap");
    int next = 0;
    for (std::size_t slot = 0; sdp.a_use == 1 && slot < std::size(sdp.a_coders); ++slot)
        for (const CODEC_RTPMAP &entry : sdp.rtpmap)
            if (entry.a_coder != UNKONW && entry.a_coder == sdp.a_coders[slot])
                put_rtpmap(facts, next++, facts.at(fmt::format("sdp.a_coders[{}]", slot)),
                           std::to_string(entry.a_payload));
}

// Blanks behind commas and semicolons, of which peers write more or fewer, say nothing.
void squeeze(Facts &facts) {
    static const std::regex blanks("([,;]) +");
    for (const char *member : {"supported.SUPPORTED", "require.REQUIRE", "content.type", "header.allow"})
        if (const auto fact = facts.find(member); fact != facts.end())
            fact->second = std::regex_replace(fact->second, blanks, "$1");
}

} // namespace

Facts said_by(const Written &written) {
    const SIP_CODE_MSG &record = written.record;
    Facts facts = members_of(record);

    const std::string transport = facts.contains("trans_type") ? facts["trans_type"] : "UDP"; // 0 shows as no value
    facts["via.transport"] = transport;
    if (record.via_count == 2)
        facts["via1.transport"] = transport;
    if (facts.contains("contact.user"))
        facts["contact.transport"] = transport;
    facts.erase("trans_type");

    use_host_name(facts, "uri", record.uri.dns);
    use_host_name(facts, "from", record.from.dns);
    use_host_name(facts, "to", record.to.dns);
    if (record.user_phone == 1)
        for (const char *party : {"uri.user_phone", "from.user_phone", "to.user_phone"})
            facts[party] = "phone";
    facts.erase("user_phone");
    if (!written.is_request)
        erase_below(facts, "uri.");
    for (const char *party : {"from", "to", "requst_uri", "p_passerted_identity"})
        add_display(facts, party);

    if (written.is_request && record.method == SIP_REQUEST_MSG_INVITE && record.to.tag_use == 0) {
        copy_below(facts, "from.", "p_preferred_identity.");
        facts.erase("p_preferred_identity.tag");
    }
    if (record.refer_to.use == 1) {
        facts["refer_to.host"] = facts["from.addr.ip"];
        facts["referred_by.content"] = fmt::format("<sip:{}@{};user=phone>", record.from.user, facts["from.addr.ip"]);
    }
    if (record.message_summary.use == 1)
        facts["message_summary.addr.ip"] = record.to.addr.ip;
    if (record.call_info.use == 1)
        facts["call_info.uri"] =
            fmt::format("sip:{}@{}:{}", record.from.user, record.from.addr.ip, record.from.addr.port);
    const bool tells_expiry =
        record.method == SIP_RESPONSE_MSG_200_OK &&
        (record.cseq.method == SIP_REQUEST_MSG_REGISTER || record.cseq.method == SIP_REQUEST_MSG_SUBCRIBE);
    if (tells_expiry && facts.contains("contact.user"))
        facts["contact.expires"] = std::to_string(record.expire.expires);
    if (record.date.use == 1)
        facts["date"] = "now";
    if (record.author.use == 1)
        facts["author.author_type"] = record.author.author_type == 103 ? "Proxy-Authorization" : "Authorization";
    if (record.authen.use == 1)
        facts["authen.authen_type"] = record.authen.authen_type == SIP_RESPONSE_MSG_407_PROXY_AUTHENTICATION_REQUIRED
                                          ? "Proxy-Authenticate"
                                          : "WWW-Authenticate";
    say_session(facts, record.sdp);
    squeeze(facts);

    // Switches, which are not on the wire.
    std::erase_if(facts, [](const auto &fact) {
        return ends_with_one_of(fact.first,
                                {".use", ".tag_use", "_conten_nouse", ".o_sec_flag", ".refermode", ".flag"});
    });
    return facts;
}

// ----------------------------------------------------------------------------------------------------------- the peers
namespace {

// A value as it stands, of which a peer did not take the address apart itself.
Address address_in(const std::string &value) {
    static const std::regex form(R"re(\s*(?:"([^"]*)"\s*)?<sip:(?:([^@>]*)@)?([^:;>?]+)(?::(\d+))?([^>]*)>(.*))re");
    std::smatch parts;
    if (!std::regex_match(value, parts, form))
        return {"", "", "no address: " + value, "", {}, {}};
    const auto parameters = [](const std::string &text) {
        Parameters found;
        std::istringstream in(text);
        for (std::string item; std::getline(in, item, ';');)
            if (!item.empty())
                found[lower(item.substr(0, item.find('=')))] =
                    item.find('=') == std::string::npos ? "" : item.substr(item.find('=') + 1);
        return found;
    };
    return {parts[1], parts[2], parts[3], parts[4], parameters(parts[5]), parameters(parts[6])};
}

void put(Facts &facts, const std::string &key, const std::string &value) {
    if (!value.empty())
        facts[key] = value;
}

std::string or_empty_mark(const std::string &value) { return value.empty() ? "(empty)" : value; }

void read_address(Facts &facts, const std::string &party, const Address &address) {
    put(facts, party + ".display", address.display);
    put(facts, party + ".user", address.user);
    put(facts, party + ".addr.ip", address.host);
    put(facts, party + ".addr.port", address.port);
    for (const auto &[name, value] : address.of_uri)
        facts[party + (name == "user" ? ".user_phone" : "." + name)] = or_empty_mark(value);
    for (const auto &[name, value] : address.of_header) {
        const bool has_member = name == "tag" || name == "expires" || name == "index";
        facts[party + (has_member ? "." : ".parameter.") + name] = or_empty_mark(value);
    }
}

void read_via(Facts &facts, const std::string &member, const Via &via) {
    put(facts, member + ".transport", via.transport);
    put(facts, member + ".addr.ip", via.host);
    put(facts, member + ".addr.port", via.port);
    for (const auto &[name, value] : via.parameters)
        facts[member + "." + name] = name == "rport" && value.empty() ? "1" : or_empty_mark(value);
}

void read_credentials(Facts &facts, const std::string &header, const Parameters &parameters) {
    const bool is_challenge = header.ends_with("authenticate");
    const std::string member = is_challenge ? "authen" : "author";
    static const std::map<std::string, std::string> names = {{"authorization", "Authorization"},
                                                             {"proxy-authorization", "Proxy-Authorization"},
                                                             {"www-authenticate", "WWW-Authenticate"},
                                                             {"proxy-authenticate", "Proxy-Authenticate"}};
    facts[member + (is_challenge ? ".authen_type" : ".author_type")] = names.at(header);
    facts[member + ".stale"] = "0";
    for (const auto &[name, value] : parameters) {
        if (name == "stale")
            facts[member + ".stale"] = lower(value) == "true" ? "1" : "0";
        else if (name == "nc")
            facts[member + ".noncecount"] = std::to_string(std::stol(value, nullptr, 16));
        else
            facts[member + "." + name] = or_empty_mark(value);
    }
}

// "now" for the time of this run, the text for any other.
std::string date_of(const std::string &value) {
    std::tm time{};
    const char *const end = strptime(value.c_str(), "%a, %d %b %Y %H:%M:%S GMT", &time);
    const bool is_now =
        end != nullptr && *end == '\0' && std::abs(std::difftime(timegm(&time), std::time(nullptr))) < 60;
    return is_now ? "now" : value;
}

std::vector<std::string> words(const std::string &text, const char *separators = " ") {
    std::vector<std::string> found;
    for (std::size_t at = 0; (at = text.find_first_not_of(separators, at)) != std::string::npos;) {
        const std::size_t end = std::min(text.find_first_of(separators, at), text.size());
        found.push_back(text.substr(at, end - at));
        at = end;
    }
    return found;
}

// Headers whose value is one member.
const std::map<std::string, std::string> &plain_headers() {
    static const std::map<std::string, std::string> members = {
        {"call-id", "callid"},
        {"korvadex-extern", "korvadex"},
        {"max-forwards", "max_forward"},
        {"expires", "expire.expires"},
        {"content-type", "content.type"},
        {"alert-info", "alert.alertinfo"},
        {"supported", "supported.SUPPORTED"},
        {"require", "require.REQUIRE"},
        {"rseq", "rseq.RSeq"},
        {"event", "event.content"},
        {"route", "record_route.content"},
        {"record-route", "record_route.content"},
        {"user-agent", "user_agent.useragent"},
        {"replaces", "replaces.content"},
        {"referred-by", "referred_by.content"},
        {"subscription-state", "subscription_state.content"},
        {"min-se", "min_se.minse"},
        {"p-early-media", "p_early_media.content"},
    };
    return members;
}

const std::map<std::string, std::string> &address_headers() {
    static const std::map<std::string, std::string> members = {
        {"from", "from"},
        {"to", "to"},
        {"contact", "contact"},
        {"request uri", "requst_uri"},
        {"p-asserted-identity", "p_passerted_identity"},
        {"p-preferred-identity", "p_preferred_identity"},
    };
    return members;
}

} // namespace

std::vector<std::string> members_of_headers() {
    std::vector<std::string> members;
    for (const auto &[header, member] : plain_headers())
        if (header != "max-forwards") // which no record says
            members.push_back(member);
    for (const auto &[header, member] : address_headers())
        members.push_back(member + ".user");
    for (const char *member : {"rack.rack", "session_expires.refresher", "refer_to.refertocontent",
                               "history_info[3].cause", "call_info.content", "date", "author.cnonce", "authen.nonce",
                               "info.key", "xml_buf", "msg_sdp.content", "message_summary.account", "sdp.a_content",
                               "sdp.rtpmap[2].a_payload", "sdp.v_coders[3]", "sdp.fax.udptlport"})
        members.emplace_back(member);
    return members;
}

namespace {

void read_header(Facts &facts, const std::string &name, const std::string &value) {
    if (const auto plain = plain_headers().find(name); plain != plain_headers().end()) {
        facts[plain->second] = value;
    } else if (const auto address = address_headers().find(name); address != address_headers().end()) {
        read_address(facts, address->second, address_in(value));
    } else if (name == "cseq" || name == "rack") {
        const bool is_rack = name == "rack";
        const auto parts = words(value);
        std::size_t part = 0;
        for (const char *member : {"rack.rack", "rack.cseq", "rack.method"})
            if (is_rack && part < parts.size())
                facts[member] = parts[part++];
        for (const char *member : {"cseq.seq", "cseq.method"})
            if (!is_rack && part < parts.size())
                facts[member] = parts[part++];
    } else if (name == "session-expires") {
        const auto parts = words(value, ";");
        facts["session_expires.sessionexpires"] = parts.at(0);
        if (parts.size() > 1)
            facts["session_expires.refresher"] = parts[1].substr(parts[1].find('=') + 1);
    } else if (name == "refer-to") {
        static const std::regex form(R"(<sip:([^@]*)@([^;>]*);user=phone(?:;([^>]*))?>)");
        std::smatch parts;
        if (std::regex_match(value, parts, form)) {
            facts["refer_to.refertotel"] = parts[1];
            facts["refer_to.host"] = parts[2];
            put(facts, "refer_to.refertocontent", parts[3]);
        } else {
            facts["header." + name] = value;
        }
    } else if (name == "history-info") {
        const auto entries = words(value, ",");
        for (std::size_t i = 0; i < entries.size(); ++i)
            read_address(facts, fmt::format("history_info[{}]", i), address_in(entries[i]));
    } else if (name == "call-info") {
        const std::size_t end = value.find(">;");
        facts["call_info.uri"] = value.substr(1, end - 1);
        facts["call_info.content"] = end == std::string::npos ? "" : value.substr(end + 2);
    } else if (name == "date") {
        facts["date"] = date_of(value);
    } else if (name != "content-length") {
        facts["header." + name] = value;
    }
}

// ---------------------------------------------------------------------------------------------------- the bodies

std::string direction_of(const Media &media) {
    for (const auto &[name, value] : media.attributes)
        if (value.empty() && (name == "sendrecv" || name == "sendonly" || name == "recvonly" || name == "inactive"))
            return name;
    return "";
}

std::string attribute(const Media &media, const std::string &wanted) {
    for (const auto &[name, value] : media.attributes)
        if (name == wanted)
            return value;
    return "";
}

// Codec of a payload: by its a=rtpmap, which the payloads below 96 may lack.
std::string codec_of(const Media &media, const std::string &payload) {
    static const std::map<std::string, std::string> by_encoding = {{"pcma/8000", "G711_A"},
                                                                   {"pcmu/8000", "G711_U"},
                                                                   {"g729/8000", "G729"},
                                                                   {"g723/8000", "G723"},
                                                                   {"gsm/8000", "GSM"},
                                                                   {"g726-32", "G726"},
                                                                   {"g722/8000", "G722"},
                                                                   {"dvi4/8000", "DVI4"},
                                                                   {"speex/8000", "SPEEX"},
                                                                   {"ilbc/8000", "ILBC"},
                                                                   {"telephone-event/8000", "TE101"}};
    for (const auto &[name, value] : media.attributes)
        if (name == "rtpmap" && value.starts_with(payload + " ")) {
            const auto known = by_encoding.find(lower(value.substr(payload.size() + 1)));
            return known != by_encoding.end() ? known->second : value;
        }
    return "no rtpmap for " + payload;
}

void read_audio(Facts &facts, const Media &audio) {
    int slot = 0;
    int dynamic = 0;
    for (const std::string &payload : audio.formats) {
        const std::string codec = codec_of(audio, payload);
        facts[fmt::format("sdp.a_coders[{}]", slot++)] = codec;
        if (codec == "SPEEX" || codec == "ILBC" || codec == "TE101")
            put_rtpmap(facts, dynamic++, codec, payload);
    }
    put(facts, "sdp.a_media", direction_of(audio));
    put(facts, "sdp.a_ptime", attribute(audio, "ptime"));
    for (const auto &[name, value] : audio.attributes)
        facts["sdp.a_content"] += "a=" + name + (value.empty() ? "" : ":" + value) + "\r\n";
}

void read_video(Facts &facts, const Media &video) {
    for (std::size_t i = 0; i < video.formats.size(); ++i)
        facts[fmt::format("sdp.v_coders[{}]", i)] = video.formats[i];
    put(facts, "sdp.v_media", direction_of(video));
    for (const std::string &payload : video.formats) {
        static const std::map<std::string, std::string> encodings = {{"31", "H261/90000"},  {"34", "H263/90000"},
                                                                     {"96", "H263/90000"},  {"99", "H264/90000"},
                                                                     {"103", "H263/90000"}, {"109", "H264/90000"}};
        const auto known = encodings.find(payload);
        const bool is_mapped =
            known != encodings.end() &&
            std::any_of(video.attributes.begin(), video.attributes.end(), [&](const auto &attribute) {
                return attribute.first == "rtpmap" && attribute.second == payload + " " + known->second;
            });
        if (!is_mapped)
            facts["sdp.v_rtpmap"] += "none for " + payload + " ";
    }
}

void read_fax(Facts &facts, const Media &fax) {
    put(facts, "sdp.fax.udptlport", fax.port);
    if (fax.formats != std::vector<std::string>{"t38"})
        facts["sdp.fax.format"] = fax.formats.empty() ? "none" : fax.formats[0];
    for (const auto &[name, value] : fax.attributes)
        facts["sdp.fax." + (name == "T38MaxBitRate" || name.starts_with("T38Fax") ? name : "attribute." + name)] =
            value;
}

void read_session(Facts &facts, const Session &session) {
    if (session.protocol_version != "0")
        facts["sdp.version"] = session.protocol_version;
    if (session.version != "1073741825") // of a session description without a version of its own
        facts["sdp.o_sec"] = session.version;
    if (!session.media.empty()) {
        const std::string &first = session.media[0].address.empty() ? session.address : session.media[0].address;
        if (session.origin_address != first)
            facts["sdp.origin"] = session.origin_address;
    }
    for (const Media &media : session.media) {
        const std::string address = media.address.empty() ? session.address : media.address;
        const bool is_fax = media.type == "image";
        const std::string prefix = media.type == "audio" ? "sdp.a_" : media.type == "video" ? "sdp.v_" : "sdp.fax.fax_";
        facts[is_fax ? "sdp.fax_use" : prefix + "use"] = "1";
        facts[prefix + "addr.ip"] = address;
        if (!is_fax)
            facts[prefix + "addr.port"] = media.port;
        if (media.protocol != (is_fax ? "udptl" : "RTP/AVP"))
            facts[prefix + "protocol"] = media.protocol;
        if (is_fax)
            read_fax(facts, media);
        else if (media.type == "audio")
            read_audio(facts, media);
        else
            read_video(facts, media);
    }
}

void read_summary(Facts &facts, const std::string &body) {
    static const std::regex form("Messages-Waiting: yes\r\nMessage-Account: sip:(.*)@(.*)\r\n"
                                 "Voice-Message: (\\d+)/(\\d+) \\((\\d+)/(\\d+)\\)\r\n");
    std::smatch parts;
    if (!std::regex_match(body, parts, form)) {
        facts["message_summary"] = body;
        return;
    }
    std::size_t part = 0;
    for (const char *member : {"account", "addr.ip", "newmsgcount", "oldmsgcount", "urgentmsgcount", "urgentoldcount"})
        facts[std::string("message_summary.") + member] = parts[++part];
}

void read_body(Facts &facts, const PeerMessage &message) {
    const auto type = message.headers.find("content-type");
    if (!message.session_refused.empty())
        facts["sdp"] = message.session_refused;
    else if (message.session)
        read_session(facts, *message.session);
    else if (type == message.headers.end())
        put(facts, "body", message.body);
    else if (type->second == "application/dtmf-relay")
        facts["info.key"] = message.body.size() == 10 ? message.body.substr(7, 1) : message.body;
    else if (type->second == "application/simple-message-summary")
        read_summary(facts, message.body);
    else
        facts[type->second.starts_with("text/plain") ? "msg_sdp.content" : "xml_buf"] = message.body;
    const auto length = message.headers.find("content-length");
    if (length == message.headers.end() || length->second != std::to_string(message.body.size()))
        facts["content-length"] =
            fmt::format("{} for {}", length == message.headers.end() ? "none" : length->second, message.body.size());
}

} // namespace

Facts read_by(const PeerMessage &message) {
    Facts facts;
    for (const std::string &complaint : message.complaints)
        facts["complaint " + complaint] = "1";
    if (!message.refused.empty()) {
        facts["refused"] = message.refused;
        return facts;
    }
    facts["method"] = message.start;
    if (message.uri)
        read_address(facts, "uri", *message.uri);
    facts["via_count"] = std::to_string(message.vias.size());
    if (message.vias.size() > 1)
        read_via(facts, "via1", message.vias.front());
    if (!message.vias.empty())
        read_via(facts, "via", message.vias.back());
    for (const auto &[name, address] : message.addresses)
        read_address(facts, address_headers().at(name), address);
    for (const auto &[name, parameters] : message.credentials)
        read_credentials(facts, name, parameters);
    for (const auto &[name, value] : message.headers)
        read_header(facts, name, value);
    read_body(facts, message);
    squeeze(facts);
    return facts;
}

} // namespace interop
