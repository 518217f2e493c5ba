#!/usr/bin/env python3
"""Decodes one message and prints what it asks for. Needs cffi, but no compiler: the installed headers are read.

Usage: decode.py [INCLUDE-DIRECTORY [LIBRARY]]
"""
import pathlib
import re
import sys

import cffi


def declarations(header):
    """What a C header declares, without what only a compiler understands."""
    text = header.read_text()
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.DOTALL)
    text = re.sub(r"#ifdef __cplusplus.*?#(else|endif)", "", text, flags=re.DOTALL)
    constants = re.findall(r"^#define \w+ \d+$", text, flags=re.MULTILINE)
    text = re.sub(r"^#.*$", "", text, flags=re.MULTILINE).replace("SIPCODE_ENUM_INT", "")
    return "\n".join([*constants, text])


MESSAGE = (
    b"OPTIONS sip:1001@192.0.2.1 SIP/2.0\r\n"
    b"Via: SIP/2.0/UDP 192.0.2.9:5070;branch=z9hG4bK1\r\n"
    b'From: "Desk" <sip:2002@192.0.2.9>;tag=a1\r\n'
    b"To: <sip:1001@192.0.2.1>\r\n"
    b"Call-ID: 4f1b@192.0.2.9\r\n"
    b"CSeq: 1 OPTIONS\r\n\r\n"
)

include = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "/usr/include")
ffi = cffi.FFI()
for name in ("fifo.h", "xml.h", "code.h", "safe.h"):
    ffi.cdef(declarations(include / "sipcode" / name))
# The host depends on the codec: both are loaded, and all functions are found through this one.
sip = ffi.dlopen(sys.argv[2] if len(sys.argv) > 2 else "libsipcode_host.so.1")

record = ffi.new("SIP_CODE_MSG *")
report = ffi.new("SIP_DECODE_REPORT *")
if sip.SIP_Decode_Buffer(MESSAGE, len(MESSAGE), record, report) != sip.SIP_DECODE_DONE:
    sys.exit(f"refused in line {report.line}, outcome {report.outcome}")


def text(member):
    return ffi.string(member).decode(errors="replace")


method = text(sip.decode_methods[record.method].text)
caller = getattr(record, "from")  # a word of Python's own
print(
    f"{method} from {text(caller.user)} to {text(record.to.user)}, "
    f"answer to {text(record.via.addr.ip)} port {record.via.addr.port}"
)
