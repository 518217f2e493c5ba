// How a run of the tool ends.
#pragma once

enum ExitStatus {
    success = 0, // all messages were decoded, encoded or answered, or nothing of them is lost
    refused = 1, // at least one was not
    misuse = 2,  // the command line, a file or the output is at fault
};

// Hands what was printed to the system. Throws std::system_error when that takes it not, as a full disk does.
void flush_output();
