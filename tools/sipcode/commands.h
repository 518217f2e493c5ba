// The subcommands of the tool. Each function adds one. Parsing the command line runs the chosen one and stores its exit
// status.
#pragma once

namespace CLI {
class App;
}

void add_decode_command(CLI::App &tool, int &status); // messages in, the members of their records out
void add_calls_command(CLI::App &tool, int &status);  // captures in, a line for each call out
void add_flow_command(CLI::App &tool, int &status);   // a capture in, the ladder of a call out
void add_encode_command(CLI::App &tool, int &status); // records as JSON in, messages out
void add_answer_command(CLI::App &tool, int &status); // requests in, their answers out
void add_check_command(CLI::App &tool, int &status);  // messages in, what their records lose out
