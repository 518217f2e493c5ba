// answering_host: answers calls, registrations, subscriptions, transfers and messages on the loopback address.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <random>
#include <string>

#include <asio/signal_set.hpp>
#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "host.h"

namespace {

constexpr int success = 0;
constexpr int misuse = 2;

constexpr const char *footer =
    "Listens on UDP and TCP; its first line of output names the port. Runs until it is interrupted and then prints a\n"
    "summary.\n"
    "Exit status: 0 after an interrupt, 2 if the command line or the port is at fault.";

Account account(const std::string &text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos || colon == 0)
        throw CLI::ValidationError("--account", fmt::format("{} is not USER:PASSWORD", text));
    return {text.substr(0, colon), text.substr(colon + 1)};
}

struct Options {
    HostSettings settings;
    std::vector<std::string> accounts;
    std::string capture;
};

void add_options(CLI::App &program, Options &options) {
    HostSettings &settings = options.settings;
    const auto add_seconds = [&program](const char *name, auto &value, const char *unit, const char *description) {
        program
            .add_option_function<int>(
                name, [&value](int count) { value = std::remove_reference_t<decltype(value)>(count); }, description)
            ->type_name(unit)
            ->check(CLI::Range(0, 86400));
    };
    program.add_option("--port", settings.port, "Port; 0 takes a free one")->capture_default_str();
    program.add_flag("--trace", settings.trace, "Print every message that is received or sent");
    program.add_option("--pcap", options.capture, "Write every message to this file, as a capture")->type_name("FILE");
    program.add_option("--account", options.accounts, "An account; may be given more than once")
        ->type_name("USER:PASSWORD");
    program.add_option("--realm", settings.realm, "Realm of the accounts")->capture_default_str();
    program.add_flag("--authenticate", settings.authenticate, "Take calls only from accounts");
    add_seconds("--ring", settings.calls.ring, "MS", "How long a call rings before it is taken; 0 unless given");
    add_seconds("--min-se", settings.calls.shortest_session, "SECONDS", "Shortest session timer; 90 unless given");
    add_seconds("--longest-call", settings.calls.longest, "SECONDS",
                "Limit of a call without a session timer; 3600 unless given");
    program.footer(footer);
}

int run(int argc, char **argv) {
    CLI::App program("Answers SIP on the loopback address.", "answering_host");
    Options options;
    HostSettings &settings = options.settings;
    add_options(program, options);
    try {
        program.parse(argc, argv);
        for (const std::string &text : options.accounts)
            settings.accounts.push_back(account(text));
    } catch (const CLI::ParseError &error) {
        return program.exit(error) == 0 ? success : misuse;
    }

    srandom(std::random_device()()); // for the library's tags
    std::optional<Capture> capture;
    if (!options.capture.empty())
        settings.capture = &capture.emplace(options.capture);
    Output output;
    asio::io_context io(1);
    AnsweringHost host(io, output, settings);
    asio::signal_set signals(io, SIGINT, SIGTERM);
    signals.async_wait([&io](std::error_code, int) { io.stop(); });
    output.line(fmt::format("answering on 127.0.0.1:{}", host.port()));
    io.run();
    output.line(host.summary());
    return success;
}

} // namespace

int main(int argc, char **argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        fmt::print(stderr, "answering_host: {}\n", error.what());
        return misuse;
    }
}
