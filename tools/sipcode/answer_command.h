// sipcode answer --status CODE [FILE|-]: requests in, their answers out.
#pragma once

namespace CLI {
class App;
}

// Adds the subcommand to the tool. When it is named on the command line, parsing runs it and stores the exit status.
void add_answer_command(CLI::App &tool, int &status);
