// What decoders and encoders share of the protocol: text to identifier of sip_code_method and back, and the default
// port. decode.h describes the results.
#pragma once

#include "text.h"

namespace sipcode {

inline constexpr int default_port = 5060;
inline constexpr std::size_t status_code_length = 3; // characters of "180"

int SIP_Decode_Parse_Method(text msg);
int SIP_Decode_Parse_Method_Response(text msg);
int SIP_Decode_Parse_Other_Response(text msg);

// Text of an identifier on the wire; the text of row 0 if the identifier is not in the table.
text method_text(int id);

} // namespace sipcode
