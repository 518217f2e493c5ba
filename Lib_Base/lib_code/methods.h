// Texts into identifiers of sip_code_method and back, over slices; decode.h tells what the exported forms return.
#pragma once

#include "text.h"

namespace sipcode {

int SIP_Decode_Parse_Method(text msg);
int SIP_Decode_Parse_Method_Response(text msg);
int SIP_Decode_Parse_Other_Response(text msg);

// Text on the wire of an identifier; that of row 0 for one outside the table.
text method_text(int id);

} // namespace sipcode
