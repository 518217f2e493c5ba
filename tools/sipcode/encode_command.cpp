// sipcode encode [FILE|-]: records as JSON in, messages out.
#include "commands.h"

#include <memory>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "console.h"
#include "message_source.h"
#include "message_writer.h"
#include "record_source.h"

namespace {

constexpr const char *footer =
    R"(The file holds records as 'sipcode decode --json' prints them: one JSON object for each message, one behind the other. A
method from 1 to 15 makes a request, one from 16 to 48 a response. Several messages are written with a line that is "----"
between them.

A member that is unknown, has a value of another kind, is out of range or too long, and JSON that is malformed, are told with
their place on standard error, and nothing is written.

Exit status: 0 all records were written, 1 some were refused, 2 the command line, a file or the output is at fault.)";

int encode(const std::string &file) {
    const std::vector<NamedRecord> records = read_records(read_source(file), source_name(file));
    MessageWriter writer;
    int status = success;
    for (const auto &[place, record] : records) {
        const std::string refusal = writer.write(record);
        if (refusal.empty())
            continue;
        tell(fmt::format("{}: refused: {}", place, refusal));
        status = refused;
    }
    return status;
}

} // namespace

void add_encode_command(CLI::App &tool, int &status) {
    auto file = std::make_shared<std::string>("-");
    CLI::App *command = tool.add_subcommand("encode", "Writes the messages of JSON records");
    command->add_option("FILE", *file, "What to read; - is standard input, which is read when none is named")
        ->type_name("");
    command->footer(footer);
    command->callback([file, &status] { status = encode(*file); });
}
