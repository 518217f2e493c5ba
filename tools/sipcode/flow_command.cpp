// sipcode flow FILE: a capture in, the ladder of a call out.
#include "commands.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/ostream.h>

#include "console.h"
#include "ladder.h"
#include "message_decoder.h"
#include "message_reader.h"
#include "message_source.h"
#include "print.h"

namespace {

constexpr std::size_t most_calls = 1000; // in a page
constexpr std::size_t most_messages = 20000;

struct Options {
    std::string file;
    Choice choice;
    std::string html;
    std::string svg;
};

constexpr const char *footer =
    R"(The ladder of a call has a column for each address and port that takes part, and an arrow for each message: its
time, the seconds since the last one, method or status, CSeq, and the streams of its session description. A message
that came before is marked as repeated. A response that came when its request had been given up is marked as late. On
a terminal the ladder has colours; otherwise it is plain ASCII. The environment variable NO_COLOR turns colours off.

If the capture has more than one call, choose one. The capture is read twice, so it cannot be a pipe.

--html takes all calls that are chosen, at most 1000 with 20000 messages, and writes one page that loads nothing: the
list of calls, their ladders, and for each message its text, what the codec reads in it, and what it loses.

)";

constexpr const char *exit_help = R"(

Exit status: 0 if the ladder was drawn, 2 if the command line, a file, the output or the choice is at fault.)";

int fail(const std::string &reason) {
    print_error(reason);
    return misuse;
}

// The calls that are chosen, in the order of their starts.
std::vector<FlowCall> chosen_calls(const Options &options) {
    std::vector<FlowCall> calls;
    track_calls(options.file, options.choice, [&](const Call &call) {
        if (call.kind == Kind::call || !options.choice.call_ids.empty())
            calls.push_back({call, {}});
    });
    std::sort(calls.begin(), calls.end(),
              [](const FlowCall &a, const FlowCall &b) { return time_of(a.call.start) < time_of(b.call.start); });
    return calls;
}

// Reads the file again, for the messages of these calls. Returns how many there was no room for.
std::size_t read_flow(const Options &options, std::vector<FlowCall> &calls) {
    std::unordered_multimap<std::string_view, FlowCall *> by_call_id;
    for (FlowCall &flow : calls)
        by_call_id.emplace(flow.call.call_id, &flow);
    std::size_t count = 0;
    std::size_t left_out = 0;
    take_messages(options.file, options.choice.filter, [&](const CapturedMessage &message) {
        MessageFacts facts;
        if (!read_facts(message.text, facts))
            return;
        const auto [first, last] = by_call_id.equal_range(facts.call_id);
        for (auto entry = first; entry != last; ++entry) {
            if (++count <= most_messages)
                entry->second->messages.emplace_back(message);
            else
                ++left_out;
        }
    });
    return left_out;
}

std::string list_of(const std::vector<FlowCall> &calls) {
    constexpr std::size_t most_listed = 10;
    std::string text;
    for (std::size_t i = 0; i < std::min(calls.size(), most_listed); ++i) {
        const Call &call = calls[i].call;
        text += fmt::format("\n  --call-id '{}'  {} calls {}, {}", printable(call.call_id), printable(call.from),
                            printable(call.to), outcome_name(call.outcome));
    }
    return calls.size() > most_listed ? text + "\n  ..." : text;
}

void write_file(const std::string &name, const std::string &content) {
    std::ofstream file(name, std::ios::binary);
    file << content;
    if (!file.flush())
        throw std::system_error(errno == 0 ? EIO : errno, std::generic_category(), name);
}

int draw_pages(const Options &options, std::vector<FlowCall> calls) {
    const std::size_t found = calls.size();
    if (found > most_calls)
        calls.erase(calls.begin() + most_calls, calls.end());
    const std::size_t left_out = read_flow(options, calls);
    std::string note;
    if (found > calls.size() || left_out > 0) {
        note = fmt::format("{} of {} are shown; {} are left out.", calls.size(), count_of(found, "call"),
                           count_of(left_out, "message"));
        print_error(fmt::format("{}: {}", options.html, note));
    }
    write_file(options.html, draw_page(calls, note));
    return success;
}

int draw_ladder(const Options &options, std::vector<FlowCall> calls) {
    if (calls.size() > 1 && options.choice.call_ids.size() != 1)
        return fail(fmt::format("{}: {} calls; choose one{}", options.file, calls.size(), list_of(calls)));
    calls.erase(calls.begin() + 1, calls.end()); // a Call-ID may have several; the ladder shows all of it
    if (const std::size_t left_out = read_flow(options, calls); left_out > 0)
        print_error(fmt::format("{}: {} left out", options.file, count_of(left_out, "message")));
    const std::vector<FlowMessage> &messages = calls.front().messages;
    const Ladder ladder = make_ladder(messages);
    if (!options.svg.empty()) {
        write_file(options.svg, draw_svg(ladder, messages));
        return success;
    }
    const bool has_colour = writes_to_terminal() && std::getenv("NO_COLOR") == nullptr;
    std::cout << draw_text(ladder, messages,
                           has_colour             ? Drawing::coloured
                           : writes_to_terminal() ? Drawing::lines
                                                  : Drawing::plain);
    return success;
}

int flow(const Options &options) {
    // The page shows what the library would log.
    discard_library_log();
    if (!can_be_read_twice(options.file))
        return fail(
            fmt::format("{}: it can be read only once, and a ladder takes two readings", source_name(options.file)));
    try {
        std::vector<FlowCall> calls = chosen_calls(options);
        if (calls.empty())
            return fail(fmt::format("{0}: no such call; 'sipcode calls --all {0}' lists what it holds", options.file));
        return options.html.empty() ? draw_ladder(options, std::move(calls)) : draw_pages(options, std::move(calls));
    } catch (const CaptureError &error) {
        return fail(fmt::format("{}: {}", options.file, error.what()));
    } catch (const std::system_error &error) {
        return fail(error.what());
    }
}

} // namespace

void add_flow_command(CLI::App &tool, int &status) {
    auto options = std::make_shared<Options>();
    CLI::App *command = tool.add_subcommand("flow", "Draws the ladder of a call");
    command->add_option("FILE", options->file, "Capture to read")->type_name("")->required();
    add_choice_options(*command, options->choice);
    CLI::Option *html = command->add_option("--html", options->html, "Writes a page with the calls instead");
    html->type_name("FILE");
    command->add_option("--svg", options->svg, "Writes the ladder as SVG instead")->type_name("FILE")->excludes(html);
    command->footer(std::string(footer) + choice_help + exit_help);
    command->callback([options, &status] { status = flow(*options); });
}
