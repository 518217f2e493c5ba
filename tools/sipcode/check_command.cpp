// sipcode check [FILE...|-]: messages in, what their records lose out.
#include "commands.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "check_summary.h"
#include "console.h"
#include "finding_printer.h"
#include "message_check.h"
#include "message_decoder.h"
#include "message_reader.h"
#include "message_source.h"

namespace {

struct Options {
    std::vector<std::string> files = {"-"};
    bool json = false;
    bool summary = false;
    Choice choice;
};

constexpr const char *footer =
    R"(The files hold messages in the form that 'sipcode decode' reads, or are captures. The command lists what a
record loses of its message. Each finding is printed as FILE:LINE:COLUMN: KIND: TEXT, followed by the line of the
message with a caret under the place. In a capture, the number and the time of the packet, its transport and addresses
come first, and the line is counted from the start of the message. The kinds:

  refused  the library refuses the message; the text is the reason
  unread   the text past the longest that is decoded, or from a NUL on
  unknown  a method or status that has no identifier
  ignored  a header line: no member keeps it, it repeats another, or its form is wrong
  dropped  a Via, route, codec or another part of a line that the record has no room for
  cut      the end of a value; the text names the member and how many characters it keeps

Removing what is ignored or dropped would not change the record. Within a header that is read, the items between commas
are compared, not each parameter. Content-Length is never listed, since an encoder writes it anew.

With --summary the findings of all files are counted instead, by header, member, codec and so on, each with a packet or
line to look at. It shows whether the fixed sizes of the record suit the messages of a network.

With --json each finding is an object on one line, with "file", "line", "column", "length", "kind" and "text". For a cut
it also has "member", "characters" and "kept". A finding of a capture also has "packet", "time", "transport", "source",
"destination" and "whole". With --summary one object holds "messages", "lossless", "refused" and "losses".

)";

constexpr const char *exit_help = R"(

Exit status: 0 if nothing is lost, 1 if something is, 2 if the command line, a file or the output is at fault.)";

class Checking {
  public:
    explicit Checking(const Options &options) : options_(options), printer_(options.json) {
        // The findings report what the library logs, and every trial would log it again.
        discard_library_log();
    }

    // Returns the exit status.
    int run(const std::string &file) {
        lossy_ = 0;
        const int status = read_messages(
            file, options_.choice, [&](const ReceivedMessage &message) { check(source_name(file), message); },
            [this] { return fmt::format("{} lose something", lossy_); });
        return std::max<int>(status, lossy_ == 0 ? success : refused);
    }

    void print_summary() const {
        if (options_.json)
            summary_.print_json();
        else
            summary_.print_text();
    }

  private:
    void check(const std::string &file, const ReceivedMessage &message) {
        const std::vector<Finding> findings = check_message(message.text, message.first_line);
        lossy_ += findings.empty() ? 0 : 1;
        if (options_.summary)
            return summary_.add(file, message, findings);
        for (const Finding &finding : findings)
            printer_.print(file, message, finding);
        end_result();
    }

    const Options &options_;
    FindingPrinter printer_;
    CheckSummary summary_;
    std::size_t lossy_ = 0; // messages of this file
};

int check(const Options &options) {
    Checking checking(options);
    int status = success;
    for (const std::string &file : options.files) {
        try {
            status = std::max(status, checking.run(file));
        } catch (const SourceError &error) {
            print_error(error.what());
            status = misuse;
        }
    }
    if (options.summary)
        checking.print_summary();
    return status;
}

} // namespace

void add_check_command(CLI::App &tool, int &status) {
    auto options = std::make_shared<Options>();
    CLI::App *command = tool.add_subcommand("check", "Lists what a record loses of its message");
    command->add_option("FILE", options->files, "Files to read; standard input if one is - or none is named")
        ->type_name("");
    command->add_flag("--json", options->json, "One JSON object per finding");
    command->add_flag("--summary", options->summary, "Counts what is lost instead of listing it");
    add_choice_options(*command, options->choice);
    command->footer(std::string(footer) + choice_help + two_readings_help + exit_help);
    command->callback([options, &status] { status = check(*options); });
}
