// sipcode answer --status CODE [FILE|-]: requests in, their answers out.
#include "commands.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "answer.h"
#include "console.h"
#include "decode.h"
#include "message_decoder.h"
#include "message_reader.h"
#include "message_writer.h"

namespace {

constexpr const char *footer =
    R"(The file holds messages in a form that 'sipcode decode' reads, captures included. Several answers are written
with a line "----" between them.

An answer repeats Via, From, To, Call-ID, CSeq, Record-Route and Korvadex-Extern. A 200 or 202 to a REGISTER also
repeats its Contact and expiry, one to a SUBSCRIBE its expiry. A 401 or 407 carries a challenge.

With --sdp an audio offer is answered with its first codec that the library knows, with telephone events if they are
offered, with the same packet time and with the direction reversed. An offer of fax alone is answered with its own
parameters.

Exit status: 0 if all requests were answered, 1 if some were not, 2 if the command line, a file or the output is at
fault.)";

struct Options {
    std::string file = "-";
    std::string status;
    std::string to_tag;
    std::optional<std::string> contact;
    std::optional<std::string> sdp;
    std::string transport = "udp";
    std::string realm;
    std::string nonce;
};

// In the order of TRANS_TYPE_E.
constexpr std::array<std::string_view, 3> transports = {"udp", "tcp", "tls"};

std::string known_statuses() {
    std::vector<std::string_view> codes;
    for (int kind = SIP_RESPONSE_MSG_100_TRY; kind < SIP_CODE_METHOD_COUNT; ++kind)
        codes.push_back(std::string_view(decode_methods[kind].text).substr(0, 3));
    std::sort(codes.begin(), codes.end());
    return fmt::format("{}", fmt::join(codes, " "));
}

sip_code_method status_kind(const std::string &code) {
    const int kind = code.size() == 3 ? SIP_Decode_Parse_Method_Response(code.c_str()) : 0;
    if (kind < SIP_RESPONSE_MSG_100_TRY)
        throw CLI::ValidationError("--status", fmt::format("{} is not one of {}", code, known_statuses()));
    return static_cast<sip_code_method>(kind);
}

void check_length(const char *option, std::string_view text, std::size_t member_size) {
    if (text.size() >= member_size)
        throw CLI::ValidationError(option,
                                   fmt::format("text of {} characters, at most {}", text.size(), member_size - 1));
}

// HOST:PORT
IPV4_ADDRESS address(const char *option, const std::string &text) {
    IPV4_ADDRESS address{};
    const std::size_t colon = text.rfind(':');
    const std::string port = colon == std::string::npos ? "" : text.substr(colon + 1);
    const char *const end = port.data() + port.size();
    const auto [port_end, error] = std::from_chars(port.data(), end, address.port);
    if (colon == 0 || error != std::errc() || port_end != end || address.port < 1 || address.port > 65535)
        throw CLI::ValidationError(option, fmt::format("{} is not HOST:PORT", text));
    const std::string host = text.substr(0, colon);
    check_length(option, host, sizeof address.ip);
    Copy_String(address.ip, host.c_str(), sizeof address.ip);
    return address;
}

// USER@HOST:PORT
SIP_CONTACT contact(const std::string &text) {
    constexpr const char *option = "--contact";
    const std::size_t at = text.rfind('@');
    if (at == std::string::npos || at == 0)
        throw CLI::ValidationError(option, fmt::format("{} is not USER@HOST:PORT", text));
    SIP_CONTACT contact{};
    const std::string user = text.substr(0, at);
    check_length(option, user, sizeof contact.user);
    Copy_String(contact.user, user.c_str(), sizeof contact.user);
    contact.addr = address(option, text.substr(at + 1));
    return contact;
}

AnswerSettings settings_of(const Options &options) {
    AnswerSettings settings{};
    settings.status = status_kind(options.status);
    const auto transport = std::find(transports.begin(), transports.end(), options.transport);
    settings.transport = static_cast<TRANS_TYPE_E>(transport - transports.begin());
    check_length("--to-tag", options.to_tag, sizeof SIP_FROMTO::tag);
    settings.to_tag = options.to_tag;
    check_length("--realm", options.realm, sizeof SIP_AUTHEN::realm);
    settings.realm = options.realm;
    check_length("--nonce", options.nonce, sizeof SIP_AUTHEN::nonce);
    settings.nonce = options.nonce;
    if (options.contact)
        settings.contact = contact(*options.contact);
    if (options.sdp)
        settings.media = address("--sdp", *options.sdp);
    return settings;
}

// Writes the answer. Returns why there is none, or an empty text.
std::string answer_message(const Decoded &request, const AnswerSettings &settings, MessageWriter &writer) {
    if (!request.refusal.empty())
        return std::string(request.refusal);
    const Answer made = answer(request.record, settings);
    return made.refusal.empty() ? writer.write(made.record) : made.refusal;
}

int answer_messages(const Options &options) {
    const AnswerSettings settings = settings_of(options);
    srandom(std::random_device()()); // for the library's tags
    MessageDecoder decoder;
    MessageWriter writer;
    std::size_t answered = 0;
    std::size_t refusals = 0;
    const auto take = [&](const ReceivedMessage &message) {
        const std::string refusal = answer_message(decoder.decode(message.text, message.place), settings, writer);
        ++(refusal.empty() ? answered : refusals);
        if (!refusal.empty())
            print_error(fmt::format("{}: refused: {}", message.place, refusal));
    };
    const int status = read_messages(options.file, {}, take,
                                     [&] { return fmt::format("{} answered, {} refused", answered, refusals); });
    return std::max<int>(status, refusals == 0 ? success : refused);
}

} // namespace

void add_answer_command(CLI::App &tool, int &status) {
    auto options = std::make_shared<Options>();
    CLI::App *command = tool.add_subcommand("answer", "Decodes requests and writes their answers");
    const auto add = [command](const char *name, auto &value, const char *type, const char *description) {
        return command->add_option(name, value, description)->type_name(type);
    };
    add("FILE", options->file, "", "File to read; standard input if it is - or missing");
    add("--status", options->status, "CODE", "Status of the answer")->required();
    add("--to-tag", options->to_tag, "TAG", "Tag of To; by default that of the request, or a new one");
    add("--contact", options->contact, "USER@HOST:PORT",
        "Contact; by default the request URI, if the answer needs one");
    add("--sdp", options->sdp, "HOST:PORT", "Answers an audio or fax offer; the peer sends to this address");
    add("--realm", options->realm, "TEXT", "Realm of a 401 or 407; by default the host of the request URI");
    add("--nonce", options->nonce, "TEXT", "Nonce of a 401 or 407; by default a new one");
    add("--transport", options->transport, "TRANSPORT", "Transport in Via and Contact: udp (the default), tcp or tls")
        ->check(CLI::IsMember(std::vector<std::string>(transports.begin(), transports.end())));
    command->footer(footer);
    command->callback([options, &status] { status = answer_messages(*options); });
}
