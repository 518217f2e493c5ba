// A record that anyone may have filled, written as a request and as a response.
#include "judge.h"
#include "judge_encode.h"

int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    static SIP_CODE_MSG record;
    fuzz::read_record({reinterpret_cast<const char *>(data), size}, record);
    fuzz::judge_encoding(fuzz::Kind::request, record);
    fuzz::judge_encoding(fuzz::Kind::response, record);
    return 0;
}
