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

#include "decode.h"
#include "message_decoder.h"
#include "message_source.h"
#include "outcome.h"
#include "print_record.h"
#include "print_session.h"
#include "record_json.h"

namespace {

struct Options {
    std::vector<std::string> files = {"-"};
    bool dump = false;
    bool json = false;
    bool all = false;
};

constexpr const char *footer =
    R"(A file holds one message, or several with a line that is "----" between them. Line ends are taken as they stand, CR LF
or LF alone.

The streams that a message offers come first, then its members. A member is present when it holds something and no record
around it is switched off by its flag.

With --json each message is one line: an object with the members' own names, in the order of the record. A text that is not
valid UTF-8 is written there as {"latin1": "..."}, one character for each byte. A refused message is {}.

With --dump the lines that a host's trace has of a record are printed, of several messages with a line that is "----" between
them.

The library's log lines, refusals and notes go to standard error.

Exit status: 0 all messages were decoded, 1 some were refused, 2 the command line, a file or the output is at fault.)";

// What kind of message it is: "INVITE", "200 OK to INVITE".
std::string kind_of(const SIP_CODE_MSG &record) {
    const char *kind = decode_methods[record.method].text;
    if (record.method < SIP_RESPONSE_MSG_100_TRY)
        return kind;
    return fmt::format("{} to {}", kind, sipcode::method_name(record.cseq.method));
}

class Printer {
  public:
    explicit Printer(const Options &options)
        : options_(options), scope_(options.all ? sipcode::Scope::all : sipcode::Scope::present) {}

    void print(Decoded &decoded, const std::string &place) {
        if (options_.dump)
            print_dump(decoded.record);
        else if (options_.json)
            print_json(decoded);
        else
            print_members(decoded, place);
        // Message by message, so that output and log keep their order when both go to one place.
        flush_output();
    }

  private:
    void print_dump(SIP_CODE_MSG &record) {
        char dump[SIP_DUMP_SIZE];
        SIP_Decode_Msg_Printf(dump, &record);
        std::cout << (is_first_ ? "" : "----\n") << dump;
        is_first_ = false;
    }

    void print_json(const Decoded &decoded) const {
        const bool accepted = decoded.refusal.empty();
        std::cout << (accepted ? sipcode::to_json(decoded.record, scope_) : nlohmann::ordered_json::object()) << '\n';
    }

    void print_members(const Decoded &decoded, const std::string &place) const {
        const bool accepted = decoded.refusal.empty();
        fmt::print(std::cout, "{}: {}\n", place, accepted ? kind_of(decoded.record) : "refused: " + decoded.refusal);
        print_session(std::cout, decoded.record);
        print_record(std::cout, decoded.record, scope_);
    }

    const Options &options_;
    sipcode::Scope scope_;
    bool is_first_ = true;
};

int decode_messages(MessageDecoder &decoder, Printer &printer, const std::string &content, const std::string &name) {
    int status = success;
    int number = 0;
    for (const std::string_view message : split_messages(content)) {
        const std::string place = fmt::format("{}: message {}", name, ++number);
        const std::string speaker = "sipcode: " + place;
        Decoded decoded = decoder.decode(std::string(message), speaker);
        if (!decoded.refusal.empty()) {
            fmt::print(stderr, "{}: refused: {}\n", speaker, decoded.refusal);
            status = refused;
        }
        printer.print(decoded, place);
    }
    return status;
}

int decode(const Options &options) {
    MessageDecoder decoder;
    Printer printer(options);
    int status = success;
    for (const std::string &file : options.files) {
        std::string content;
        try {
            content = read_source(file);
        } catch (const std::system_error &error) {
            fmt::print(stderr, "sipcode: {}\n", error.what());
            status = misuse;
            continue;
        }
        status = std::max(status, decode_messages(decoder, printer, content, source_name(file)));
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
    command->footer(footer);
    command->callback([options, &status] { status = decode(*options); });
}
