// sipcode decode [FILE...|-]: messages in, the members of their records out.
#include "commands.h"

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "console.h"
#include "message_decoder.h"
#include "message_printer.h"
#include "message_reader.h"
#include "message_source.h"

namespace {

struct Options {
    std::vector<std::string> files = {"-"};
    bool dump = false;
    bool raw = false;
    bool json = false;
    bool all = false;
    Choice choice;
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

With --json each message is one line: an object with "start_line", which holds the method and URI or the status and
reason that were received, and the members in the order of the record. The name of a number follows it: "method_name". A
text that is not valid UTF-8 is written as {"latin1": "..."}, with one character for each byte. A refused message is {}.
A message of a capture is an object with "packet", "time", "transport", "source", "destination", "whole", and either
"start_line" and "record" or "refused".

With --dump the library's trace lines of each record are printed, with a line "----" between messages. With --raw the
messages themselves are, so the other commands can read them.

Refusals, notes and the library's log lines go to standard error.

)";

constexpr const char *exit_help = R"(

Exit status: 0 if all messages were decoded, 1 if some were refused, 2 if the command line, a file or the output is at
fault. Messages before the damage in a capture are decoded.)";

Form form_of(const Options &options) {
    if (options.dump)
        return Form::dump;
    if (options.raw)
        return Form::raw;
    return options.json ? Form::json : Form::members;
}

class Decoding {
  public:
    explicit Decoding(const Options &options)
        : options_(options), printer_(form_of(options), options.all ? sipcode::Scope::all : sipcode::Scope::present) {}

    // Returns the exit status.
    int run(const std::string &file) {
        refused_.clear();
        cut_values_ = count_ = 0;
        const int status = read_messages(
            file, options_.choice, [this](const ReceivedMessage &message) { decode(message); },
            [this] { return summary(); });
        return std::max<int>(status, refused_.empty() ? success : refused);
    }

  private:
    void decode(const ReceivedMessage &message) {
        Decoded &decoded = decoder_.decode(message.text, message.place);
        if (!decoded.refusal.empty()) {
            print_error(fmt::format("{}: refused: {}", message.place, decoded.refusal));
            ++refused_[decoded.refusal];
        }
        cut_values_ += static_cast<std::size_t>(decoded.cut_values);
        ++count_;
        printer_.print(decoded, message.place, message.origin);
    }

    // "1 decoded, 2 refused (1 no CSeq, 1 no Via), 0 values cut"
    std::string summary() const {
        std::size_t refused_count = 0;
        std::string reasons;
        for (const auto &[reason, count] : refused_) {
            refused_count += count;
            reasons += fmt::format("{}{} {}", reasons.empty() ? " (" : ", ", count, reason);
        }
        return fmt::format("{} decoded, {} refused{}{}, {} cut", count_ - refused_count, refused_count, reasons,
                           reasons.empty() ? "" : ")", count_of(cut_values_, "value"));
    }

    const Options &options_;
    MessageDecoder decoder_;
    MessagePrinter printer_;
    std::size_t count_ = 0;
    std::size_t cut_values_ = 0;
    std::map<std::string_view, std::size_t> refused_; // by reason
};

int decode(const Options &options) {
    Decoding decoding(options);
    int status = success;
    for (const std::string &file : options.files) {
        try {
            status = std::max(status, decoding.run(file));
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
    CLI::Option *dump = command->add_flag("--dump", options->dump, "The library's trace lines");
    dump->excludes(json)->excludes(all);
    command->add_flag("--raw", options->raw, "The messages as they were received")->excludes(json, all, dump);
    add_choice_options(*command, options->choice);
    command->footer(std::string(footer) + choice_help + two_readings_help + exit_help);
    command->callback([options, &status] { status = decode(*options); });
}
