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
    R"(The file holds records in the form that 'sipcode decode --json' prints, one JSON object after another.
"start_line" and the names of numbers are not read. A message that decode refused is refused again. A method from 1 to
15 makes a request, one from 16 to 48 a response. Several messages are written with a line "----" between them.

Nothing is written if the JSON is malformed, or if a member is unknown, has a value of the wrong type, is out of range
or is too long. The message on standard error gives the place.

Exit status: 0 if all records were written, 1 if some were refused, 2 if the command line, a file or the output is at
fault.)";

int encode(const std::string &file) {
    const std::vector<NamedRecord> records = read_records(read_source(file), source_name(file));
    MessageWriter writer;
    int status = success;
    for (const auto &[place, record, refused_before] : records) {
        const std::string refusal = refused_before.empty() ? writer.write(record) : refused_before;
        if (refusal.empty())
            continue;
        print_error(fmt::format("{}: refused: {}", place, refusal));
        status = refused;
    }
    return status;
}

} // namespace

void add_encode_command(CLI::App &tool, int &status) {
    auto file = std::make_shared<std::string>("-");
    CLI::App *command = tool.add_subcommand("encode", "Writes the messages of JSON records");
    command->add_option("FILE", *file, "File to read; standard input if it is - or missing")->type_name("");
    command->footer(footer);
    command->callback([file, &status] { status = encode(*file); });
}
