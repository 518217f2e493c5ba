// sipcode decode, see decode_command.h.
#include "decode_command.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/ostream.h>

#include "message_decoder.h"
#include "message_source.h"
#include "outcome.h"
#include "print_record.h"
#include "record_json.h"

namespace {

struct Options {
    std::vector<std::string> files = {"-"};
    bool json = false;
    bool all = false;
};

constexpr const char *footer =
    R"(A file holds one message, or several with a line that is "----" between them. Line ends are taken as they stand, CR LF
or LF alone.

A member is present when it holds something and no record around it is switched off by its flag. With --json each message is
one line: an object with the members' own names, in the order of the record. A text that is not valid UTF-8 is written there
as {"latin1": "..."}, one character for each byte. A refused message is {}.

The library's log lines, refusals and notes go to standard error.

Exit status: 0 all messages were decoded, 1 some were refused, 2 the command line, a file or the output is at fault.)";

// What kind of message it is: "INVITE", "200 OK to INVITE".
std::string kind_of(const SIP_CODE_MSG &record) {
    const char *kind = decode_methods[record.method].text;
    if (record.method < SIP_RESPONSE_MSG_100_TRY)
        return kind;
    return fmt::format("{} to {}", kind, sipcode::method_name(record.cseq.method));
}

void print(const Decoded &decoded, const std::string &place, const Options &options) {
    const sipcode::Scope scope = options.all ? sipcode::Scope::all : sipcode::Scope::present;
    const bool accepted = decoded.refusal.empty();
    if (options.json) {
        std::cout << (accepted ? sipcode::to_json(decoded.record, scope) : nlohmann::ordered_json::object()) << '\n';
    } else {
        fmt::print(std::cout, "{}: {}\n", place, accepted ? kind_of(decoded.record) : "refused: " + decoded.refusal);
        print_record(std::cout, decoded.record, scope);
    }
}

int decode_messages(MessageDecoder &decoder, const std::string &content, const std::string &name,
                    const Options &options) {
    int status = success;
    int number = 0;
    for (const std::string_view message : split_messages(content)) {
        const std::string place = fmt::format("{}: message {}", name, ++number);
        const std::string speaker = "sipcode: " + place;
        const Decoded decoded = decoder.decode(std::string(message), speaker);
        if (!decoded.refusal.empty()) {
            fmt::print(stderr, "{}: refused: {}\n", speaker, decoded.refusal);
            status = refused;
        }
        print(decoded, place, options);
        // Message by message, so that output and log keep their order when both go to one place.
        flush_output();
    }
    return status;
}

int decode(const Options &options) {
    MessageDecoder decoder;
    int status = success;
    for (const std::string &file : options.files) {
        std::string content;
        try {
            content = read_source(file);
        } catch (const std::system_error &error) {
            fmt::print(stderr, "sipcode: {}: {}\n", source_name(file), error.code().message());
            status = misuse;
            continue;
        }
        status = std::max(status, decode_messages(decoder, content, source_name(file), options));
    }
    return status;
}

} // namespace

void add_decode_command(CLI::App &tool, int &status) {
    auto options = std::make_shared<Options>();
    CLI::App *command = tool.add_subcommand("decode", "Decodes messages and prints the members of their records");
    command->add_option("FILE", options->files, "What to read; - is standard input, which is read when none is named")
        ->type_name("");
    command->add_flag("--json", options->json, "One JSON object per message");
    command->add_flag("--all", options->all, "Absent members too");
    command->footer(footer);
    command->callback([options, &status] { status = decode(*options); });
}
