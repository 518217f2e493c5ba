// calling_host: registers with a SIP server on the loopback address, places a call, sends a digit, transfers, hangs up.
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <optional>
#include <random>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "caller.h"

namespace {

constexpr int success = 0;
constexpr int failure = 1;
constexpr int misuse = 2;

constexpr const char *footer =
    "Exit status: 0 if every step succeeded, 1 if one failed, 2 if the command line, the port or\n"
    "the connection is at fault.";

struct Options {
    CallerSettings settings;
    unsigned short server_port = 0;
    int talk = 0;
    std::string capture;
};

void add_options(CLI::App &program, Options &options) {
    CallerSettings &settings = options.settings;
    const std::map<std::string, TRANS_TYPE_E> transports{{"udp", E_UDP}, {"tcp", E_TCP}};
    program.add_option("SERVER-PORT", options.server_port, "Port of the server")
        ->required()
        ->check(CLI::Range(1, 65535));
    program.add_option("--port", settings.port, "Own port; a free one unless given");
    program.add_option("--transport", settings.transport, "udp or tcp; udp unless given")
        ->transform(CLI::CheckedTransformer(transports));
    program.add_flag("--trace", settings.trace, "Print every message that is received or sent");
    program.add_option("--pcap", options.capture, "Write every message to this file, as a capture")->type_name("FILE");
    program.add_option("--user", settings.account.user, "User that calls")->capture_default_str();
    program.add_option("--password", settings.account.password, "Password of that user");
    program.add_option("--call", settings.callee, "User that is called");
    program.add_flag("--register", settings.registers, "Register first");
    program.add_option("--digit", settings.digit, "Digit that is sent in the call")->check([](const std::string &text) {
        return text.size() == 1 ? "" : "one character is expected";
    });
    program.add_option("--transfer", settings.transfer_to, "User that the call is transferred to");
    program.add_option("--talk", options.talk, "How long the call lasts before it is hung up")
        ->type_name("MS")
        ->check(CLI::Range(0, 86400));
    program.footer(footer);
}

int run(int argc, char **argv) {
    CLI::App program("Calls by SIP on the loopback address.", "calling_host");
    Options options;
    add_options(program, options);
    try {
        program.parse(argc, argv);
        if (!options.settings.registers && options.settings.callee.empty())
            throw CLI::RequiredError("--register or --call");
    } catch (const CLI::ParseError &error) {
        return program.exit(error) == 0 ? success : misuse;
    }
    options.settings.server = {asio::ip::address_v4::loopback(), options.server_port};
    options.settings.talk = std::chrono::milliseconds(options.talk);

    srandom(std::random_device()()); // for the library's tags
    std::optional<Capture> capture;
    if (!options.capture.empty())
        options.settings.capture = &capture.emplace(options.capture);
    Output output;
    asio::io_context io(1);
    CallingHost host(io, output, options.settings);
    host.start();
    io.run();
    return host.succeeded() ? success : failure;
}

} // namespace

int main(int argc, char **argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        fmt::print(stderr, "calling_host: {}\n", error.what());
        return misuse;
    }
}
