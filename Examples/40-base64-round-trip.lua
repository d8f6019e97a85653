-- Bytes, text and a whole file as base64, and the way back
-- Run it with: ./corvane run Examples/40-base64-round-trip.lua

local files = FileFunctionsCorv

-- Text travels as UTF-8; bytes are Lua strings, zeros included.
local text = "Gr\u{fc}\u{df}e, \u{20ac}5"
local encoded = files.stringToBase64String{ string = text }.base64String
print(text, encoded)
assert(files.base64StringToString{ base64String = encoded }.string == text)

local bytes = "\0\1\2\xfd\xfe\xff"
encoded = files.bytesToBase64String{ bytes = bytes }.base64String
local decoded = files.base64StringToBytes{ base64String = encoded }
print(#bytes .. " bytes", encoded)
assert(decoded.success and decoded.ReturnValue == bytes)

-- Damaged text is noticed; there are no bytes then.
decoded = files.base64StringToBytes{ base64String = encoded:sub(1, -2) .. "!" }
print("damaged", decoded.success)
assert(not decoded.success and decoded.ReturnValue == "")

-- The file's name comes along, for a field of a form or of JSON.
local path = os.tmpname()
local pins = { directoryType = EFileFunctionsCorvDirectoryType.E_ad, filePath = path }
files.writeBytesToFile{ directoryType = pins.directoryType, filePath = path, bytes = bytes }
local whole = files.fileToBase64String(pins)
print(whole.fileName ~= "" and "a file", whole.base64String)
assert(whole.success and whole.base64String == encoded)
files.deleteFile(pins)
