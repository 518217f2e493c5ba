// sipcode decode [FILE...|-]: messages in, the members of their records out.
#pragma once

namespace CLI {
class App;
}

// Adds the subcommand to the tool. When it is named on the command line, parsing runs it and stores the exit status.
void add_decode_command(CLI::App &tool, int &status);
