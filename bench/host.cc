// The host of the measurements: the string services of the reference host, and no log lines or documents, so that the
// figures are those of the codec.
#include <sipcode/host.h>

int Log_Trace_Proc(int, int, const char *, int, const char *, ...) { return 0; }

int MT_Log_Process(int, int, int, const char *, ...) { return 0; }

int Xml_Encode(pXmldoc, char *out, int *) {
    out[0] = '\0';
    return 0;
}
