// Decodes a message, sends it on and answers it with every status. A text from one message may go into another.
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
    // One status for each input: together the inputs try them all.
    const int status =
        static_cast<int>(SIP_RESPONSE_MSG_100_TRY + size % (SIP_CODE_METHOD_COUNT - SIP_RESPONSE_MSG_100_TRY));
    for (const int method : {record.method, static_cast<int>(SIP_RESPONSE_MSG_200_OK), status}) {
        record.method = method;
        fuzz::judge_encoding(fuzz::Kind::response, record);
    }
    return 0;
}
