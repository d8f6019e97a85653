-- When was a file changed and read last? Times are UTC
-- Run it with: ./corvane run Examples/54-time-stamps.lua

local files, absolute = FileFunctionsCorv, EFileFunctionsCorvDirectoryType.E_ad
local file = { directoryType = absolute, filePath = os.tmpname() }

files.setTimeStamp{ directoryType = absolute, filePath = file.filePath, DateTime = "2024-02-29T12:34:56.000Z" }
local changed = files.getTimeStamp(file).ReturnValue
print("changed", changed)
assert(changed == "2024-02-29T12:34:56.000Z")

-- Times written like this compare like texts.
local read = files.getAccessTimeStamp(file).ReturnValue
print("read after that", read > changed)
assert(read > changed)

-- A file that is not there has the smallest time that there is.
os.remove(file.filePath)
assert(files.getTimeStamp(file).ReturnValue == "0001-01-01T00:00:00.000Z")
