// Why the library refuses messages, see message_check.h.
#include "message_check.h"

std::string_view refusal_text(SIP_DECODE_OUTCOME outcome) {
    switch (outcome) {
    case SIP_DECODE_DONE:
        return "";
    case SIP_DECODE_NULL_ARGUMENT:
        return "no message";
    case SIP_DECODE_NO_START_LINE:
        return "no usable start line";
    case SIP_DECODE_BAD_STATUS:
        return "the status has fewer than three characters";
    case SIP_DECODE_BAD_URI:
        return "the request URI is in angle brackets";
    case SIP_DECODE_BAD_PROTOCOL:
        return "the request line does not end in SIP/2.0";
    case SIP_DECODE_NO_HEADER:
        return "no header line after the start line";
    case SIP_DECODE_NO_CALL_ID:
        return "no Call-ID";
    case SIP_DECODE_NO_CSEQ:
        return "no CSeq";
    case SIP_DECODE_BAD_CSEQ:
        return "no number in the CSeq";
    case SIP_DECODE_NO_VIA:
        return "no Via";
    }
    return "an outcome that this tool does not know";
}
