// The recording host: the eleven services in plain code, as hard on the library as host.h allows.
#pragma once

#include <string>
#include <vector>

namespace support {

struct Host {
    // Each log line in order: "0 text" and "1 text" by level, "MT text" from MT_Log_Process. A call whose constants are
    // wrong is marked "?".
    std::vector<std::string> log;

    // host.h leaves this to the host for Str_Cmp and Str_N_Cmp.
    bool folds_case = false;
};

// The host of the calling thread.
Host &host();

} // namespace support
