// sipcode: the codec from the command line. One subcommand per file; a new one adds its line below.
#include <cerrno>
#include <cstdio>
#include <exception>
#include <iostream>
#include <system_error>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "commands.h"

void flush_output() {
    errno = 0;
    if (!std::cout.flush())
        throw std::system_error(errno == 0 ? EIO : errno, std::generic_category(), "standard output");
}

namespace {

int run(int argc, char **argv) {
    CLI::App tool("SIP messages through the codec: decoded, encoded, answered, checked.", "sipcode");
    tool.set_version_flag("--version", "sipcode " SIPCODE_VERSION);
    tool.require_subcommand(1);
    tool.failure_message([](const CLI::App *, const CLI::Error &error) {
        return fmt::format("sipcode: {}\nTry 'sipcode --help'.\n", error.what());
    });

    int status = success;
    add_decode_command(tool, status);
    add_encode_command(tool, status);
    add_answer_command(tool, status);
    add_check_command(tool, status);
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
        fmt::print(stderr, "sipcode: {}\n", error.what());
        return misuse;
    }
}
