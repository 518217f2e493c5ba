// Texts into identifiers of sip_code_method, over slices; decode.h tells what the exported forms return.
#pragma once

#include "text.h"

namespace sipcode {

int SIP_Decode_Parse_Method(text msg);
int SIP_Decode_Parse_Method_Response(text msg);
int SIP_Decode_Parse_Other_Response(text msg);

} // namespace sipcode
