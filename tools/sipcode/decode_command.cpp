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
    R"(A file holds one message, or several with a line "----" between them. Line ends are read as they are: CR LF, or
LF alone.

A pcap or pcapng file is recognised by its first bytes. Messages are read from UDP datagrams and TCP streams, and IP
fragments are reassembled. Each message is printed with the number and the time of its packet, its transport and
addresses. A line of counts on standard error follows. With --filter only packets that match the BPF expression are
read. Of a fragmented datagram, a filter on ports matches only the first fragment.

The streams of the session description come first, then the members that are present. A member is present if it is not 0
or empty, and if the flag of the structure around it is set.

With --json each message is one line: an object with the names of the members, in the order of the record. A text that
is not valid UTF-8 is written as {"latin1": "..."}, with one character for each byte. A refused message is {}. A message
of a capture is an object with "packet", "time", "transport", "source", "destination", "whole", and either "record" or
"refused".

With --dump the library's trace lines of each record are printed, with a line "----" between messages.

Refusals, notes and the library's log lines go to standard error.

Exit status: 0 if all messages were decoded, 1 if some were refused, 2 if the command line, a file or the output is at
fault. Messages before the damage in a capture are decoded.)";

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
            print_error(fmt::format("{}: refused: {}", place, decoded.refusal));
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
        print_error(fmt::format("{}: not a capture, so --filter does not apply", source.name()));
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
            print_error(error.what());
            status = misuse;
        }
    }
    return status;
}

} // namespace

void add_decode_command(CLI::App &tool, int &status) {
    auto options = std::make_shared<Options>();
    CLI::App *command = tool.add_subcommand("decode", "Decodes messages and prints the members of their records");
    command->add_option("FILE", options->files, "Files to read; standard input if one is - or none is named")
        ->type_name("");
    CLI::Option *json = command->add_flag("--json", options->json, "One JSON object per message");
    CLI::Option *all = command->add_flag("--all", options->all, "Prints absent members too");
    command->add_flag("--dump", options->dump, "The library's trace lines")->excludes(json)->excludes(all);
    command->add_option("--filter", options->filter, "Reads only packets of a capture that match")->type_name("BPF");
    command->footer(footer);
    command->callback([options, &status] { status = decode(*options); });
}
