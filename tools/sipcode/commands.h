// The subcommands, a file each, and what they share: how a run ends, and why the library refuses a message.
#pragma once

#include <string_view>

#include "safe.h"

namespace CLI {
class App;
}

enum ExitStatus {
    success = 0, // all messages were decoded, encoded or answered, and nothing of them was lost
    refused = 1, // at least one was not
    misuse = 2,  // the command line, a file or the output is at fault
};

// Each adds its subcommand to the tool. If the command line names it, parsing runs it and stores the exit status.
void add_decode_command(CLI::App &tool, int &status); // messages to records
void add_encode_command(CLI::App &tool, int &status); // JSON records to messages
void add_answer_command(CLI::App &tool, int &status); // requests to responses
void add_check_command(CLI::App &tool, int &status);  // messages to what their records lose

// Hands what was printed to the system. Throws std::system_error if the write fails, as on a full disk.
void flush_output();

// Why the library refuses a message; empty for one that it does not refuse.
std::string_view refusal_text(SIP_DECODE_OUTCOME outcome);
