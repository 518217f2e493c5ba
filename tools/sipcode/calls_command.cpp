// sipcode calls [FILE...|-]: captures in, a line for each call out.
#include "commands.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "call_figures.h"
#include "call_printer.h"
#include "call_tracker.h"
#include "capture_writer.h"
#include "console.h"
#include "message_decoder.h"
#include "message_reader.h"
#include "message_source.h"

namespace {

struct Options {
    std::vector<std::string> files = {"-"};
    Choice choice;
    bool all = false;
    bool csv = false;
    bool json = false;
    bool summary = false;
    std::string capture;
};

constexpr const char *footer =
    R"(Each call is printed when it ends, or at the end of the last file: its start, caller and called party (the users
of From and To), its outcome, the seconds until it rang (any 18x response) and until it was answered, its length from
the answer to BYE, its messages, how many of them were repetitions, its codecs and its Call-ID. Several files are read
as one capture, in their order. A call has one Call-ID and one tag of the caller. All its forks belong to it, and the
tries that were challenged. The outcomes:

  answered    it was answered, and hung up
  busy        486 or 600
  no answer   408 or 480
  cancelled   487, or CANCEL without a final response
  refused     another final status of 300 or more
  unanswered  no final response
  up          it was answered, and not hung up in the capture
  joined      it began before the capture

With --all registrations, subscriptions and other requests outside of calls are printed too, with their method. With
--json each call is an object on one line: "start", "kind", "method", "call_id", "from", "to", "outcome", "status",
"ring", "answer", "length" (seconds; left out if unknown), "messages", "repeated", "forks", "codecs", "source" and
"destination". These names will not change. --pcap writes the messages of the listed calls to a capture, a packet for
each.

Figures follow: calls by outcome and by final status, and of RFC 6076 the session establishment ratio, the session
request delay and the registration request delay. --summary prints only these. --csv and --json print only the calls;
--json --summary prints the figures as one object.

At most 100000 calls are followed at a time. If there are more, the one without a message for the longest time is
printed before its end, and counted.

)";

constexpr const char *exit_help = R"(

Exit status: 0 if the files were read, 2 if the command line, a file or the output is at fault, 130 after an
interrupt.)";

CallForm form_of(const Options &options) {
    if (options.summary)
        return CallForm::none;
    if (options.csv)
        return CallForm::csv;
    return options.json ? CallForm::json : CallForm::text;
}

class Listing {
  public:
    explicit Listing(const Options &options)
        : options_(options), printer_(form_of(options)), tracker_([this](const Call &call) { report(call); }) {
        // The calls show what the library would log.
        discard_library_log();
    }

    // Returns the exit status.
    int read(const std::string &file) {
        Choice packets;
        packets.filter = options_.choice.filter;
        is_text_ = false;
        unread_ = 0;
        const int status = read_messages(
            file, packets, [this](const ReceivedMessage &message) { add(message); },
            [this] { return unread_ == 0 ? "" : fmt::format("{} without Call-ID or CSeq", unread_); });
        if (!is_text_)
            return status;
        print_error(fmt::format("{}: not a capture", source_name(file)));
        return misuse;
    }

    void finish() {
        tracker_.finish();
        figures_.given_up = tracker_.given_up();
        if (options_.json && options_.summary)
            print_figures_json(figures_);
        else if (options_.summary || form_of(options_) == CallForm::text)
            print_figures(figures_);
    }

    const CallIds &chosen() const { return chosen_; }

  private:
    void add(const ReceivedMessage &message) {
        is_text_ = message.origin == nullptr;
        MessageFacts facts;
        if (is_text_)
            return;
        if (read_facts(message.text, facts))
            tracker_.add(*message.origin, facts);
        else
            ++unread_;
    }

    void report(const Call &call) {
        if (!options_.choice.matches(call))
            return;
        figures_.add(call);
        if (!options_.all && call.kind != Kind::call)
            return;
        if (!options_.capture.empty())
            chosen_.insert(call.call_id);
        printer_.print(call);
    }

    const Options &options_;
    CallPrinter printer_;
    CallFigures figures_;
    bool is_text_ = false;   // the file is not a capture
    std::size_t unread_ = 0; // messages of this file
    CallIds chosen_;         // for the capture that is written
    CallTracker tracker_;
};

// The packets of the chosen calls are known only after the first pass.
int write_capture(const Options &options, const CallIds &chosen) {
    CaptureWriter writer(options.capture);
    Choice choice;
    choice.filter = options.choice.filter;
    choice.call_ids.assign(chosen.begin(), chosen.end());
    std::size_t written = 0;
    int status = success;
    if (chosen.empty())
        return success;
    for (const std::string &file : options.files) {
        const int result = read_messages(
            file, choice,
            [&](const ReceivedMessage &message) {
                writer.add(*message.origin);
                ++written;
            },
            [&] { return fmt::format("{} written to {}", written, options.capture); });
        status = std::max(status, result);
    }
    writer.finish();
    return status;
}

// Why --pcap is not possible; empty if it is.
std::string why_no_capture(const Options &options) {
    for (const std::string &file : options.files) {
        std::error_code ignored; // of a file that does not exist yet
        if (!can_be_read_twice(file))
            return fmt::format("--pcap reads each file twice, which {} does not allow", source_name(file));
        if (std::filesystem::equivalent(file, options.capture, ignored))
            return fmt::format("{} is read, so --pcap must not overwrite it", file);
    }
    return "";
}

int list_calls(const Options &options) {
    if (const std::string reason = options.capture.empty() ? "" : why_no_capture(options); !reason.empty()) {
        print_error(reason);
        return misuse;
    }
    Listing listing(options);
    int status = success;
    for (const std::string &file : options.files) {
        try {
            status = std::max(status, listing.read(file));
        } catch (const SourceError &error) {
            print_error(error.what());
            status = misuse;
        }
    }
    listing.finish();
    if (!options.capture.empty() && status != interrupted)
        status = std::max(status, write_capture(options, listing.chosen()));
    return status;
}

} // namespace

void add_calls_command(CLI::App &tool, int &status) {
    auto options = std::make_shared<Options>();
    CLI::App *command = tool.add_subcommand("calls", "Lists the calls of captures");
    command->add_option("FILE", options->files, "Captures to read; standard input if one is - or none is named")
        ->type_name("");
    command->add_flag("--all", options->all, "Lists what is outside of calls too");
    CLI::Option *csv = command->add_flag("--csv", options->csv, "Comma-separated values");
    command->add_flag("--json", options->json, "One JSON object per call")->excludes(csv);
    command->add_flag("--summary", options->summary, "Only the figures of all calls")->excludes(csv);
    add_choice_options(*command, options->choice);
    command->add_option("--pcap", options->capture, "Writes the messages of these calls to a capture")
        ->type_name("FILE");
    command->footer(std::string(footer) + choice_help + exit_help);
    command->callback([options, &status] { status = list_calls(*options); });
}
