// CompatibleSipMethodName, only for hosts that split messages themselves. Sip_Decode reads a status with tables.cpp.
//
//   rlPart2 "486 Busy Here" -> 30    "401 Unauthorized" -> 0: only the codes below are known here
#include "decode.h"
#include "methods.h"

namespace {

// Fewer than in decode_methods: hosts rely on 401, 403, 422, 503 and 513 being unknown.
constexpr sip_code_method known_kinds[] = {
    SIP_RESPONSE_MSG_487_REQUEST_TERMINATED,
    SIP_RESPONSE_MSG_407_PROXY_AUTHENTICATION_REQUIRED,
    SIP_RESPONSE_MSG_423_INTERVAL_TOO_BRIEF,
    SIP_RESPONSE_MSG_480_TEMPORARILY_UNAVAILABLE,
    SIP_RESPONSE_MSG_100_TRY,
    SIP_RESPONSE_MSG_180_RING,
    SIP_RESPONSE_MSG_183_RING,
    SIP_RESPONSE_MSG_181,
    SIP_RESPONSE_MSG_182_RING,
    SIP_RESPONSE_MSG_400_BAD_REQUEST,
    SIP_RESPONSE_MSG_404_NOT_FONUD,
    SIP_RESPONSE_MSG_405_METHOD_NOT_ALLOWED,
    SIP_RESPONSE_MSG_408_REQUEST_TIMEROUT,
    SIP_RESPONSE_MSG_481_CALL_TRANSACTION_DOES_NOT_EXIST,
    SIP_RESPONSE_MSG_483_TOO_MANY_HOPS,
    SIP_RESPONSE_MSG_486_BUSY_HERE,
    SIP_RESPONSE_MSG_488_NOT_ACCEPTABLE_HERE,
    SIP_RESPONSE_MSG_491_REQUEST_PENDING,
    SIP_RESPONSE_MSG_493_UNDECIPHERABLE,
    SIP_RESPONSE_MSG_500_SERVER_INTERNAL_ERROR,
    SIP_RESPONSE_MSG_501_NOT_IMPLEMENTED,
    SIP_RESPONSE_MSG_504_SERVER_TIME_OUT,
    SIP_RESPONSE_MSG_505_VERSION_NOT_SUPPORTED,
    SIP_RESPONSE_MSG_600_BUSY_EVERYWHERE,
    SIP_RESPONSE_MSG_603_DECLINE,
    SIP_RESPONSE_MSG_604_DOES_NOT_NOT_EXIST_ANYWHERE,
    SIP_RESPONSE_MSG_202_OK,
    SIP_RESPONSE_MSG_200_OK,
};

} // namespace

void CompatibleSipMethodName(SIP_MSG *psip_msg) {
    if (psip_msg == nullptr || psip_msg->method != SIP_REQUEST_MSG_UNKNOWN || psip_msg->rlPart2 == nullptr)
        return;
    for (const sip_code_method kind : known_kinds) {
        if (std::strncmp(psip_msg->rlPart2, decode_methods[kind].text, sipcode::status_code_length) == 0) {
            psip_msg->method = kind;
            return;
        }
    }
}
