// sipcode check [FILE...|-]: messages in, what of them their records do not hold out.
#pragma once

namespace CLI {
class App;
}

// Adds the subcommand to the tool. When it is named on the command line, parsing runs it and stores the exit status.
void add_check_command(CLI::App &tool, int &status);
