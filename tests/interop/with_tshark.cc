// tshark's dissectors of SIP and SDP.
#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sstream>
#include <stdexcept>

#include <fmt/core.h>
#include <nlohmann/json.hpp>
#include <pcap/pcap.h>
#include <unistd.h>

#include "peers.h"

namespace interop {
namespace {

using Json = nlohmann::json;

// ------------------------------------------------------------------------------------------------------- the capture

// IPv4 and UDP in front of a message, on the SIP port of the loopback address. Checksums are left out.
std::string datagram(const std::string &text) {
    const auto big_endian = [](std::size_t number) {
        return std::string{static_cast<char>(number >> 8), static_cast<char>(number)};
    };
    const std::string loopback("\x7f\x00\x00\x01", 4);
    const std::string port = big_endian(5060);
    return std::string("\x45\x00", 2) + big_endian(20 + 8 + text.size()) +
           std::string("\x00\x00\x00\x00\x40\x11\x00\x00", 8) + loopback + loopback + port + port +
           big_endian(8 + text.size()) + std::string(2, '\0') + text;
}

void write_capture(const std::string &file, const std::vector<std::string> &texts) {
    const std::unique_ptr<pcap_t, void (*)(pcap_t *)> format(pcap_open_dead(DLT_RAW, 65535), pcap_close);
    pcap_dumper_t *const dumper = pcap_dump_open(format.get(), file.c_str());
    if (dumper == nullptr)
        throw std::runtime_error(pcap_geterr(format.get()));
    long second = 0;
    for (const std::string &text : texts) {
        const std::string packet = datagram(text);
        const auto length = static_cast<bpf_u_int32>(packet.size());
        const pcap_pkthdr header{{second++, 0}, length, length};
        pcap_dump(reinterpret_cast<u_char *>(dumper), &header, reinterpret_cast<const u_char *>(packet.data()));
    }
    pcap_dump_close(dumper);
}

// ------------------------------------------------------------------------------------------------------------ fields

struct Field {
    const char *field;
    const char *name; // of the header or parameter that it holds
};

// Headers whose whole value is one field.
constexpr std::array plain = {
    Field{"sip.Call-ID", "call-id"},
    Field{"sip.CSeq", "cseq"},
    Field{"sip.RAck", "rack"},
    Field{"sip.RSeq", "rseq"},
    Field{"sip.Max-Forwards", "max-forwards"},
    Field{"sip.Expires", "expires"},
    Field{"sip.Content-Type", "content-type"},
    Field{"sip.Content-Length", "content-length"},
    Field{"sip.Alert-Info", "alert-info"},
    Field{"sip.Supported", "supported"},
    Field{"sip.Require", "require"},
    Field{"sip.Event", "event"},
    Field{"sip.Route", "route"},
    Field{"sip.Record-Route", "record-route"},
    Field{"sip.User-Agent", "user-agent"},
    Field{"sip.Replaces", "replaces"},
    Field{"sip.Refer-To", "refer-to"},
    Field{"sip.Referred-by", "referred-by"},
    Field{"sip.Subscription-State", "subscription-state"},
    Field{"sip.Session-Expires", "session-expires"},
    Field{"sip.Min-SE", "min-se"},
    Field{"sip.P-Early-Media", "p-early-media"},
    Field{"sip.History-Info", "history-info"},
    Field{"sip.Call-Info", "call-info"},
    Field{"sip.Allow", "allow"},
    Field{"sip.Accept", "accept"},
    Field{"sip.Accept-Language", "accept-language"},
    Field{"sip.Date", "date"},
};

constexpr std::array addresses = {Field{"sip.from", "from"}, Field{"sip.to", "to"}, Field{"sip.contact", "contact"},
                                  Field{"sip.pai", "p-asserted-identity"}, Field{"sip.ppi", "p-preferred-identity"}};
constexpr std::array address_parts = {".display.info", ".user", ".host", ".port", ".param"};

constexpr std::array credentials = {
    Field{"sip.Authorization", "authorization"}, Field{"sip.Proxy-Authorization", "proxy-authorization"},
    Field{"sip.WWW-Authenticate", "www-authenticate"}, Field{"sip.Proxy-Authenticate", "proxy-authenticate"}};
constexpr std::array digest = {Field{"sip.auth.digest.response", "response"},
                               Field{"sip.auth.nc", "nc"},
                               Field{"sip.auth.username", "username"},
                               Field{"sip.auth.realm", "realm"},
                               Field{"sip.auth.nonce", "nonce"},
                               Field{"sip.auth.algorithm", "algorithm"},
                               Field{"sip.auth.opaque", "opaque"},
                               Field{"sip.auth.qop", "qop"},
                               Field{"sip.auth.cnonce", "cnonce"},
                               Field{"sip.auth.uri", "uri"},
                               Field{"sip.auth.stale", "stale"}};

constexpr std::array via_parts = {Field{"sip.Via.branch", "branch"}, Field{"sip.Via.rport", "rport"},
                                  Field{"sip.Via.received", "received"}};

constexpr std::array others = {"sip.Method",
                               "sip.Status-Line",
                               "sip.r-uri.user",
                               "sip.r-uri.host",
                               "sip.r-uri.port",
                               "sip.r-uri",
                               "sip.from.tag",
                               "sip.to.tag",
                               "sip.contact.parameter",
                               "sip.Via",
                               "sip.Via.transport",
                               "sip.Via.sent-by.address",
                               "sip.Via.sent-by.port",
                               "sdp",
                               "sdp.version",
                               "sdp.owner.version",
                               "sdp.owner.address",
                               "sdp.connection_info.address",
                               "sdp.media",
                               "sdp.media_attr",
                               "_ws.expert.message",
                               "_ws.expert.severity",
                               "_ws.malformed"};

std::string tshark_command(const std::string &capture) {
    std::string command = fmt::format("{} -r '{}' -n -T json", TSHARK, capture);
    const auto add = [&command](const std::string &field) { command += " -e " + field; };
    for (const Field &each : plain)
        add(each.field);
    for (const Field &each : addresses)
        for (const char *part : address_parts)
            add(std::string(each.field) + part);
    for (const Field &each : credentials)
        add(each.field);
    for (const Field &each : digest)
        add(each.field);
    for (const Field &each : via_parts)
        add(each.field);
    for (const char *each : others)
        add(each);
    return command + " 2>&1";
}

Json run_tshark(const std::string &capture) {
    const std::unique_ptr<FILE, int (*)(FILE *)> pipe(popen(tshark_command(capture).c_str(), "r"), pclose);
    std::string output;
    std::array<char, 65536> block;
    for (std::size_t got; (got = fread(block.data(), 1, block.size(), pipe.get())) > 0;)
        output.append(block.data(), got);
    const std::size_t start = output.find("[\n"); // behind what it says about being root
    if (start == std::string::npos)
        throw std::runtime_error("tshark: " + output);
    return Json::parse(output.substr(start));
}

// ----------------------------------------------------------------------------------------------------------- reading

using Values = std::vector<std::string>;

Values values(const Json &layers, const std::string &field) {
    const auto found = layers.find(field);
    return found != layers.end() ? found->get<Values>() : Values();
}

std::string first(const Json &layers, const std::string &field) {
    const Values all = values(layers, field);
    return all.empty() ? "" : all.front();
}

std::string unquoted(const std::string &value) {
    return value.size() >= 2 && value.front() == '"' && value.back() == '"' ? value.substr(1, value.size() - 2) : value;
}

void put_parameters(Parameters &found, const Values &items) {
    for (const std::string &item : items) {
        const std::size_t equal = item.find('=');
        found[lower(item.substr(0, equal))] = equal == std::string::npos ? "" : item.substr(equal + 1);
    }
}

Parameters uri_parameters(const std::string &uri) {
    Parameters found;
    std::istringstream in(uri);
    std::string item;
    std::getline(in, item, ';'); // the URI itself
    while (std::getline(in, item, ';'))
        put_parameters(found, {item});
    return found;
}

Address address(const Json &layers, const std::string &party) {
    Address made{unquoted(first(layers, party + ".display.info")),
                 first(layers, party + ".user"),
                 first(layers, party + ".host"),
                 first(layers, party + ".port"),
                 {},
                 {}};
    put_parameters(made.of_uri, values(layers, party + ".param"));
    if (const std::string tag = first(layers, party + ".tag"); !tag.empty())
        made.of_header["tag"] = tag;
    return made;
}

void read_vias(const Json &layers, PeerMessage &message) {
    const Values lines = values(layers, "sip.Via");
    const Values transports = values(layers, "sip.Via.transport");
    const Values hosts = values(layers, "sip.Via.sent-by.address");
    const Values ports = values(layers, "sip.Via.sent-by.port");
    // Only the values of one Via are told apart by their place; the lines say which Via has the parameter.
    std::map<std::string, std::size_t> taken;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        Via via{transports.at(i), hosts.at(i), ports.at(i), {}};
        for (const Field &part : via_parts) {
            const std::string parameter = std::string(";") + part.name;
            if (lines[i].find(parameter) == std::string::npos)
                continue;
            const Values all = values(layers, part.field);
            std::size_t &next = taken[part.field];
            const std::string value = next < all.size() ? all[next] : "no value";
            via.parameters[part.name] = value != part.name ? value : ""; // the name, when it stands alone
            ++next;
        }
        message.vias.push_back(std::move(via));
    }
}

// The attributes of all streams stand in one list, which the attributes of the next stream begin with a=rtpmap of its own
// payload; so the order of the lines is taken from the message body.
void read_session(const Json &layers, PeerMessage &message) {
    Session session;
    session.protocol_version = first(layers, "sdp.version");
    session.origin_address = first(layers, "sdp.owner.address");
    session.version = first(layers, "sdp.owner.version");
    const Values lines = values(layers, "sdp.media");
    const Values addresses_of_media = values(layers, "sdp.connection_info.address");
    const Values attributes = values(layers, "sdp.media_attr");
    std::size_t next_address = 0;
    std::size_t next_attribute = 0;
    std::istringstream body(message.body);
    for (std::string line; std::getline(body, line);) {
        if (line.starts_with("m=")) {
            std::istringstream parts(lines.at(session.media.size()));
            Media media;
            parts >> media.type >> media.port >> media.protocol;
            for (std::string format; parts >> format;)
                media.formats.push_back(format);
            session.media.push_back(std::move(media));
        } else if (line.starts_with("c=")) {
            (session.media.empty() ? session.address : session.media.back().address) =
                addresses_of_media.at(next_address++);
        } else if (line.starts_with("a=") && !session.media.empty()) {
            const std::string &attribute = attributes.at(next_attribute++);
            const std::size_t colon = attribute.find(':');
            session.media.back().attributes.emplace_back(attribute.substr(0, colon),
                                                         colon == std::string::npos ? "" : attribute.substr(colon + 1));
        }
    }
    message.session = std::move(session);
}

void read_complaints(const Json &layers, PeerMessage &message) {
    constexpr long note = 0x400000; // what is less is no complaint
    const Values texts = values(layers, "_ws.expert.message");
    const Values severities = values(layers, "_ws.expert.severity");
    for (std::size_t i = 0; i < texts.size(); ++i)
        if (std::stol(severities.at(i)) >= note)
            message.complaints.push_back(texts[i]);
    if (layers.contains("_ws.malformed"))
        message.complaints.push_back("malformed");
}

PeerMessage read_packet(const Json &layers, const std::string &text) {
    PeerMessage message;
    read_complaints(layers, message);
    if (const std::string method = first(layers, "sip.Method");
        !method.empty() && !layers.contains("sip.Status-Line")) {
        message.start = method;
        message.uri = address(layers, "sip.r-uri");
        message.uri->of_uri = uri_parameters(first(layers, "sip.r-uri")); // which have no field of their own
    } else {
        const std::string line = first(layers, "sip.Status-Line");
        message.start = line.substr(std::min(line.size(), line.find(' ') + 1));
    }
    read_vias(layers, message);
    for (const Field &each : addresses)
        if (layers.contains(std::string(each.field) + ".host"))
            message.addresses[each.name] = address(layers, each.field);
    if (const auto contact = message.addresses.find("contact"); contact != message.addresses.end())
        put_parameters(contact->second.of_header, values(layers, "sip.contact.parameter"));
    for (const Field &each : credentials)
        if (layers.contains(each.field))
            for (const Field &part : digest)
                if (layers.contains(part.field))
                    message.credentials[each.name][part.name] = unquoted(first(layers, part.field));
    for (const Field &each : plain)
        if (layers.contains(each.field))
            for (const std::string &value : values(layers, each.field)) {
                std::string &joined = message.headers[each.name];
                joined += (joined.empty() ? "" : ",") + value;
            }
    message.body = text.substr(text.find("\r\n\r\n") + 4); // it shows the fields of a body alone
    if (layers.contains("sdp"))
        read_session(layers, message);
    return message;
}

} // namespace

std::vector<PeerMessage> read_with_tshark(const std::vector<std::string> &texts) {
    std::string directory = std::filesystem::temp_directory_path() / "interop-XXXXXX";
    if (mkdtemp(directory.data()) == nullptr)
        throw std::runtime_error("no temporary directory");
    const std::string capture = directory + "/messages.pcap";
    write_capture(capture, texts);
    const Json packets = run_tshark(capture);
    std::filesystem::remove_all(directory);
    if (packets.size() != texts.size())
        throw std::runtime_error(fmt::format("tshark shows {} of {} packets", packets.size(), texts.size()));
    std::vector<PeerMessage> messages;
    for (std::size_t i = 0; i < texts.size(); ++i)
        messages.push_back(read_packet(packets[i].at("_source").at("layers"), texts[i]));
    return messages;
}

} // namespace interop
