// sipcode decode [FILE...|-]: messages in, the members of their records out.
#include "commands.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "capture_decoder.h"
#include "console.h"
#include "message_decoder.h"
#include "message_printer.h"
#include "message_source.h"

namespace {

struct Options {
    std::vector<std::string> files = {"-"};
    bool dump = false;
    bool json = false;
    bool all = false;
    std::string filter;
};

constexpr const char *footer =
    R"(A file holds one message, or several with a line that is "----" between them. Line ends are taken as they stand, CR LF
or LF alone.

A pcap or pcapng file is known by its first bytes. Its messages are those of UDP datagrams and TCP streams, IP fragments put
together; number and time of the packet, transport and addresses stand with each. A line of counts on standard error ends it.
With --filter only packets that the BPF expression takes are looked at; one on ports takes no fragment but the first.

The streams that a message offers come first, then its members. A member is present when it holds something and no record
around it is switched off by its flag.

With --json each message is one line: an object with the members' own names, in the order of the record. A text that is not
valid UTF-8 is written there as {"latin1": "..."}, one character for each byte. A refused message is {}. One of a capture is an object that holds
"packet", "time", "transport", "source", "destination", "whole", and either "record" or "refused".

With --dump the lines that a host's trace has of a record are printed, of several messages with a line that is "----" between
them.

The library's log lines, refusals and notes go to standard error.

Exit status: 0 all messages were decoded, 1 some were refused, 2 the command line, a file or the output is at fault. What stands
in front of the damage in a capture is decoded all the same.)";

Form form_of(const Options &options) {
    if (options.dump)
        return Form::dump;
    return options.json ? Form::json : Form::members;
}

int decode_messages(const std::string &content, const std::string &name, MessageDecoder &decoder,
                    MessagePrinter &printer) {
    int status = success;
    int number = 0;
    for (const std::string_view message : split_messages(content)) {
        const std::string place = fmt::format("{}: message {}", name, ++number);
        Decoded decoded = decoder.decode(std::string(message), place);
        if (!decoded.refusal.empty()) {
            tell(fmt::format("{}: refused: {}", place, decoded.refusal));
            status = refused;
        }
        printer.print(decoded, place, nullptr);
    }
    return status;
}

int decode_source(Source &source, const Options &options, MessageDecoder &decoder, MessagePrinter &printer) {
    if (source.is_capture())
        return decode_capture(source, options.filter, decoder, printer);
    if (!options.filter.empty()) {
        tell(fmt::format("{}: --filter is for captures, which this file is not", source.name()));
        return misuse;
    }
    return decode_messages(source.read_all(), source.name(), decoder, printer);
}

int decode(const Options &options) {
    MessageDecoder decoder;
    MessagePrinter printer(form_of(options), options.all ? sipcode::Scope::all : sipcode::Scope::present);
    int status = success;
    for (const std::string &file : options.files) {
        try {
            Source source(file);
            status = std::max(status, decode_source(source, options, decoder, printer));
        } catch (const SourceError &error) {
            tell(error.what());
            status = misuse;
        }
    }
    return status;
}

} // namespace

void add_decode_command(CLI::App &tool, int &status) {
    auto options = std::make_shared<Options>();
    CLI::App *command = tool.add_subcommand("decode", "Decodes messages and prints the members of their records");
    command->add_option("FILE", options->files, "What to read; - is standard input, which is read when none is named")
        ->type_name("");
    CLI::Option *json = command->add_flag("--json", options->json, "One JSON object per message");
    CLI::Option *all = command->add_flag("--all", options->all, "Absent members too");
    command->add_flag("--dump", options->dump, "The lines of a host's trace")->excludes(json)->excludes(all);
    command->add_option("--filter", options->filter, "Packets of a capture to look at")->type_name("BPF");
    command->footer(footer);
    command->callback([options, &status] { status = decode(*options); });
}
