/* Decodes one message and prints what it asks for. Link with the library and the reference host. */
#include <sipcode/safe.h>
#include <stdio.h>

static const char message[] = "OPTIONS sip:1001@192.0.2.1 SIP/2.0\r\n"
                              "Via: SIP/2.0/UDP 192.0.2.9:5070;branch=z9hG4bK1\r\n"
                              "From: \"Desk\" <sip:2002@192.0.2.9>;tag=a1\r\n"
                              "To: <sip:1001@192.0.2.1>\r\n"
                              "Call-ID: 4f1b@192.0.2.9\r\n"
                              "CSeq: 1 OPTIONS\r\n\r\n";

int main(void) {
    SIP_CODE_MSG record;
    SIP_DECODE_REPORT report;
    if (SIP_Decode_Buffer(message, sizeof message - 1, &record, &report) != SIP_DECODE_DONE) {
        fprintf(stderr, "refused in line %d, outcome %d\n", report.line, report.outcome);
        return 1;
    }
    printf("%s from %s to %s, answer to %s port %d\n", decode_methods[record.method].text, record.from.user,
           record.to.user, record.via.addr.ip, record.via.addr.port);
    return 0;
}
