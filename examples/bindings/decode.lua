-- Decodes one message and prints what it asks for. For LuaJIT, whose ffi reads the installed headers.
-- Usage: luajit decode.lua [INCLUDE-DIRECTORY [LIBRARY]]
local ffi = require("ffi")

-- What a C header declares, without what only a compiler understands.
local function declarations(path)
    local file = assert(io.open(path))
    local text = "\n" .. file:read("*a"):gsub("/%*.-%*/", "")
    file:close()
    text = text:gsub("#ifdef __cplusplus.-\n#e%l+", ""):gsub("SIPCODE_ENUM_INT", "")
    for name, value in text:gmatch("\n#define (SIP_[%w_]+) (%d+)") do
        text = text:gsub("%[" .. name .. "%]", "[" .. value .. "]")
    end
    return (text:gsub("\n#[^\n]*", ""))
end

local message = "OPTIONS sip:1001@192.0.2.1 SIP/2.0\r\n"
    .. "Via: SIP/2.0/UDP 192.0.2.9:5070;branch=z9hG4bK1\r\n"
    .. 'From: "Desk" <sip:2002@192.0.2.9>;tag=a1\r\n'
    .. "To: <sip:1001@192.0.2.1>\r\n"
    .. "Call-ID: 4f1b@192.0.2.9\r\n"
    .. "CSeq: 1 OPTIONS\r\n\r\n"

for _, name in ipairs({ "fifo.h", "xml.h", "code.h", "safe.h" }) do
    ffi.cdef(declarations((arg[1] or "/usr/include") .. "/sipcode/" .. name))
end
-- The host depends on the codec: both are loaded, and all functions are found through this one.
local sip = ffi.load(arg[2] or "libsipcode_host.so.1")

local record = ffi.new("SIP_CODE_MSG")
local report = ffi.new("SIP_DECODE_REPORT")
if sip.SIP_Decode_Buffer(message, #message, record, report) ~= ffi.C.SIP_DECODE_DONE then
    io.stderr:write(("refused in line %d, outcome %d\n"):format(report.line, report.outcome))
    os.exit(1)
end

local text = ffi.string
print(("%s from %s to %s, answer to %s port %d"):format(
    text(sip.decode_methods[record.method].text), text(record.from.user), text(record.to.user),
    text(record.via.addr.ip), record.via.addr.port))
