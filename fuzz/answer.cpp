// A message is decoded, sent on and answered with each status that there is: what comes from a message may go into another.
#include "judge.h"
#include "judge_encode.h"

int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    static SIP_CODE_MSG record;
    if (size > fuzz::longest_input)
        return 0;
    const auto [result, decoded] = fuzz::decode({reinterpret_cast<const char *>(data), size});
    if (result != 1)
        return 0;
    record = decoded;
    record.to.tag_use = record.to.tag[0] != '\0';
    record.author.author_type += 2; // from the header that was read to the challenge that it answers
    if (record.method < SIP_RESPONSE_MSG_100_TRY)
        fuzz::judge_encoding(fuzz::Kind::request, record);
    // Every status is a message of its own; one for each input is enough for the many inputs that there are.
    const int status =
        static_cast<int>(SIP_RESPONSE_MSG_100_TRY + size % (SIP_CODE_METHOD_COUNT - SIP_RESPONSE_MSG_100_TRY));
    for (const int method : {record.method, static_cast<int>(SIP_RESPONSE_MSG_200_OK), status}) {
        record.method = method;
        fuzz::judge_encoding(fuzz::Kind::response, record);
    }
    return 0;
}
