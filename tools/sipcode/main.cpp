// sipcode: the codec on the command line. Each subcommand has its own file; a new one adds a line below.
#include <exception>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "code.h"
#include "commands.h"
#include "console.h"

namespace {

int run(int argc, char **argv) {
    CLI::App tool("Decodes, encodes, answers and checks SIP messages, and shows the calls of captures.", "sipcode");
    tool.set_version_flag("--version", "sipcode " SIPCODE_VERSION);
    tool.require_subcommand(1);
    tool.failure_message([](const CLI::App *, const CLI::Error &error) {
        return fmt::format("sipcode: {}\nTry 'sipcode --help'.\n", error.what());
    });

    int status = success;
    const ResultOutput output;
    add_decode_command(tool, status);
    add_encode_command(tool, status);
    add_answer_command(tool, status);
    add_check_command(tool, status);
    add_calls_command(tool, status);
    add_flow_command(tool, status);
    try {
        tool.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        status = tool.exit(error) == 0 ? success : misuse;
    }
    flush_output();
    return status;
}

} // namespace

int main(int argc, char **argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        print_error(error.what());
        return misuse;
    }
}
