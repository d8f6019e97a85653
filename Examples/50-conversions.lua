-- Numbers and texts made ready for a URL, a label or a log
-- Run it with: ./corvane run Examples/50-conversions.lua

local library = CorvaneBPLibrary

-- A 64-bit number keeps every digit on its way into a text.
local digits = library.Int64ToFString{ value = math.mininteger }.ReturnValue
print("smallest", digits)
assert(digits == "-9223372036854775808")

-- A megabyte has 1048576 bytes here.
local bytes = library.megabyteToByte{ mb = 3 }.ReturnValue
print("3 MB", bytes .. " bytes")
assert(bytes == 3145728)
assert(library.byteToMegabyte{ byte = bytes // 2 }.ReturnValue == 1.5)

-- What goes into a URL as a value is encoded first; the URL as a whole is not. The pure node does the same.
local name = "Gr\u{fc}\u{df}e & more"
local encoded = library.urlEncode{ string = name }.ReturnValue
print(name, encoded)
assert(encoded == "Gr%C3%BC%C3%9Fe%20%26%20more")
assert(library.urlEncodePure{ string = name }.ReturnValue == encoded)
