-- A program that crashed during a multipart stream upload has left the end of a form in a file: find it and cut it off
-- Run it with: ./corvane run Examples/26-repair-after-a-crash.lua

local path = os.tmpname()
local file = assert(io.open(path, "wb"))
file:write(string.rep("x", 1000), "\r\n------UE4CorvanePlugin_1000--\r\n") -- as the crash has left it
file:close()

local leftover = { directoryType = EHTTPCorvFileUpload.E_ad, filePath = path }
local search = CorvaneBPLibrary.searchUploadLeftovers(leftover)
print("leftover found", search.found, "the file had " .. search.originalFileSize .. " bytes")
assert(search.found and search.originalFileSize == 1000)

CorvaneBPLibrary.repairFileAfterUpload(leftover) -- returns false in any case; whether it worked shows in the log, and here:
assert(not CorvaneBPLibrary.searchUploadLeftovers(leftover).found)
file = assert(io.open(path, "rb"))
print("now it has " .. file:seek("end") .. " bytes")
file:close()
os.remove(path)
