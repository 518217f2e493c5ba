// sipcode check [FILE...|-]: messages in, what their records lose out.
#include "commands.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/ostream.h>
#include <nlohmann/json.hpp>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>

#include "console.h"
#include "message_check.h"
#include "message_source.h"

namespace {

struct Options {
    std::vector<std::string> files = {"-"};
    bool json = false;
};

constexpr const char *footer =
    R"(A file holds messages as 'sipcode decode' reads them. Each thing that a message's record does not hold is told on one line,
FILE:LINE:COLUMN: KIND: TEXT, with the line of the message and a caret under it. The kinds:

  refused  the library refuses the message, and why
  unread   the text behind the longest that is decoded
  unknown  a method or status that no identifier stands for
  ignored  a header line: no member takes it, it repeats another, or its form keeps it from being read
  dropped  a Via, route, codec or another part of a line that finds no place
  cut      the end of a value, with the member and the characters that it keeps

What is ignored or dropped could be taken out of the message without a change of its record. Of headers that are read, what
stands between two commas is looked at, not each parameter. Content-Length counts for nothing: an encoder writes it anew.

With --json each is one line: an object with "file", "line", "column", "length", "kind" and "text", and for a cut "member",
"characters" and "kept".

Exit status: 0 nothing is lost, 1 something is, 2 the command line, a file or the output is at fault.)";

struct Place {
    std::size_t line;
    std::size_t column; // from 1
    std::size_t length; // on that line
    std::string_view text;
};

Place place_of(std::string_view message, const Range &range, std::size_t first_line) {
    const std::size_t line_begin = message.substr(0, range.begin).rfind('\n') + 1; // npos + 1 is 0
    const std::size_t line_end = std::min(message.find_first_of("\r\n", line_begin), message.size());
    const std::size_t end = std::min(range.end, line_end);
    return {line_number(message, range.begin, first_line), range.begin - line_begin + 1,
            end > range.begin ? end - range.begin : 0, message.substr(line_begin, line_end - line_begin)};
}

// The text with one visible character for each byte.
std::string visible(std::string_view text) {
    std::string shown(text);
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return c < ' ' || c > '~'; }, '.');
    return shown;
}

void print_text(const std::string &file, const Finding &finding, const Place &place) {
    constexpr std::size_t longest = 100;
    constexpr std::size_t before = 40;
    const std::size_t begin = place.text.size() <= longest || place.column <= before ? 0 : place.column - 1 - before;
    const std::size_t room = longest - (place.column - 1 - begin);
    fmt::print(std::cout, "{}:{}:{}: {}: {}\n  {}\n  {:>{}}{:~>{}}\n", file, place.line, place.column,
               loss_name(finding.loss), visible(finding.text), visible(place.text.substr(begin, longest)), '^',
               place.column - begin, "", std::min(std::max(place.length, std::size_t{1}), room) - 1);
}

void print_json(const std::string &file, const Finding &finding, const Place &place) {
    nlohmann::ordered_json object = {{"file", file},
                                     {"line", place.line},
                                     {"column", place.column},
                                     {"length", place.length},
                                     {"kind", loss_name(finding.loss)},
                                     {"text", visible(finding.text)}};
    if (finding.loss == Loss::cut && finding.kept != finding.characters) {
        object["member"] = finding.member.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(finding.member);
        object["characters"] = finding.characters;
        object["kept"] = finding.kept;
    }
    std::cout << object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

std::vector<Finding> check_silently(std::string_view message, std::size_t first_line) {
    const DiscardLibraryPrints discard;
    return check_message(message, first_line);
}

int check_messages(const std::string &content, const std::string &file, bool as_json) {
    int status = success;
    for (const std::string_view message : split_messages(content)) {
        const auto begin = static_cast<std::size_t>(message.data() - content.data());
        const std::size_t first_line = line_number(content, begin, 1);
        for (const Finding &finding : check_silently(message, first_line)) {
            const Place place = place_of(message, finding.place, first_line);
            if (as_json)
                print_json(file, finding, place);
            else
                print_text(file, finding, place);
            status = refused;
        }
        flush_output();
    }
    return status;
}

int check_source(const std::string &file, bool as_json) {
    Source source(file);
    if (source.is_capture()) {
        tell(fmt::format("{}: check reads messages, captures are for decode", source.name()));
        return misuse;
    }
    return check_messages(source.read_all(), source.name(), as_json);
}

int check(const Options &options) {
    // What the library logs is told in findings, and every trial logs it again.
    spdlog::register_logger(
        std::make_shared<spdlog::logger>("sipcode", std::make_shared<spdlog::sinks::null_sink_st>()));
    int status = success;
    for (const std::string &file : options.files) {
        try {
            status = std::max(status, check_source(file, options.json));
        } catch (const SourceError &error) {
            tell(error.what());
            status = misuse;
        }
    }
    return status;
}

} // namespace

void add_check_command(CLI::App &tool, int &status) {
    auto options = std::make_shared<Options>();
    CLI::App *command = tool.add_subcommand("check", "Tells what of messages their records do not hold");
    command->add_option("FILE", options->files, "What to read; - is standard input, which is read when none is named")
        ->type_name("");
    command->add_flag("--json", options->json, "One JSON object per finding");
    command->footer(footer);
    command->callback([options, &status] { status = check(*options); });
}
