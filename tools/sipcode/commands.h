// The subcommands of the tool. Each adder names one; parsing the command line runs it and stores the exit status.
#pragma once

namespace CLI {
class App;
}

void add_decode_command(CLI::App &tool, int &status); // messages to the members of their records
void add_encode_command(CLI::App &tool, int &status); // records as JSON to messages
void add_answer_command(CLI::App &tool, int &status); // requests to their answers
void add_check_command(CLI::App &tool, int &status);  // messages to what their records lose
