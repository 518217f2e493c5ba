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
    R"(The files hold messages in the form that 'sipcode decode' reads. The command lists what a record loses of its
message. Each finding is printed as FILE:LINE:COLUMN: KIND: TEXT, followed by the line of the message with a caret
under the place. The kinds:

  refused  the library refuses the message; the text is the reason
  unread   the text past the longest that is decoded, or from a NUL on
  unknown  a method or status that has no identifier
  ignored  a header line: no member keeps it, it repeats another, or its form is wrong
  dropped  a Via, route, codec or another part of a line that the record has no room for
  cut      the end of a value; the text names the member and how many characters it keeps

Removing what is ignored or dropped would not change the record. Within a header that is read, the items between commas
are compared, not each parameter. Content-Length is never listed, since an encoder writes it anew.

With --json each finding is an object on one line, with "file", "line", "column", "length", "kind" and "text". For a cut
it also has "member", "characters" and "kept".

Exit status: 0 if nothing is lost, 1 if something is, 2 if the command line, a file or the output is at fault.)";

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

int check_messages(const std::string &content, const std::string &file, bool as_json) {
    int status = success;
    std::size_t counted = 0; // up to here
    std::size_t first_line = 1;
    for (const std::string_view message : split_messages(content)) {
        const auto begin = static_cast<std::size_t>(message.data() - content.data());
        first_line = line_number(std::string_view(content).substr(counted), begin - counted, first_line);
        counted = begin;
        for (const Finding &finding : check_message(message, first_line)) {
            const Place place = place_of(message, finding.place, first_line);
            if (as_json)
                print_json(file, finding, place);
            else
                print_text(file, finding, place);
            status = refused;
        }
        end_result();
    }
    return status;
}

int check_source(const std::string &file, bool as_json) {
    Source source(file);
    if (source.is_capture()) {
        print_error(fmt::format("{}: check does not read captures, only decode does", source.name()));
        return misuse;
    }
    return check_messages(source.read_all(), source.name(), as_json);
}

int check(const Options &options) {
    // The findings report what the library logs, and every trial would log it again.
    spdlog::register_logger(
        std::make_shared<spdlog::logger>("sipcode", std::make_shared<spdlog::sinks::null_sink_st>()));
    int status = success;
    for (const std::string &file : options.files) {
        try {
            status = std::max(status, check_source(file, options.json));
        } catch (const SourceError &error) {
            print_error(error.what());
            status = misuse;
        }
    }
    return status;
}

} // namespace

void add_check_command(CLI::App &tool, int &status) {
    auto options = std::make_shared<Options>();
    CLI::App *command = tool.add_subcommand("check", "Lists what a record loses of its message");
    command->add_option("FILE", options->files, "Files to read; standard input if one is - or none is named")
        ->type_name("");
    command->add_flag("--json", options->json, "One JSON object per finding");
    command->footer(footer);
    command->callback([options, &status] { status = check(*options); });
}
