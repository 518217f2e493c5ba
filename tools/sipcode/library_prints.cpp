// Standard output without the library's prints, see library_prints.h.
#include "library_prints.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "commands.h"

// A standard output that is closed stays so: what is printed on it fails by itself.
DiscardLibraryPrints::DiscardLibraryPrints() {
    flush_output();
    output_ = dup(STDOUT_FILENO);
    if (output_ == -1)
        return;
    const int sink = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (sink == -1)
        throw std::system_error(errno, std::generic_category(), "/dev/null");
    dup2(sink, STDOUT_FILENO);
    close(sink);
}

DiscardLibraryPrints::~DiscardLibraryPrints() {
    if (output_ == -1)
        return;
    std::fflush(stdout);
    dup2(output_, STDOUT_FILENO);
    close(output_);
}
