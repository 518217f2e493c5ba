// A whole message.
#include "judge.h"

int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    if (size <= fuzz::longest_input)
        fuzz::decode({reinterpret_cast<const char *>(data), size});
    return 0;
}
