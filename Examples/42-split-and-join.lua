-- A file is cut into parts, and the parts make the file again
-- Run it with: ./corvane run Examples/42-split-and-join.lua

local files, absolute = FileFunctionsCorv, EFileFunctionsCorvDirectoryType.E_ad
local path = os.tmpname()
local bytes = string.rep("0123456789", 1000)
files.writeBytesToFile{ directoryType = absolute, filePath = path, bytes = bytes }
local hash = files.getMD5FromFile{ directoryType = absolute, filePath = path }.MD5

-- The parts lie beside the file; the last one has what does not divide evenly, and its size is not told.
local split = files.splitFile{ directoryType = absolute, filePath = path, parts = 3 }
assert(split.success)
for number, part in ipairs(split.absolutePathsOfTheParts) do
	local size = files.fileSize{ directoryType = absolute, filePath = part }.ReturnValue
	print("part " .. number, size .. " bytes", split.sizeOfTheParts[number] or "the rest")
end

local joined = path .. ".joined"
for _, part in ipairs(split.absolutePathsOfTheParts) do
	local read = files.readBytesFromFile{ directoryType = absolute, filePath = part }
	assert(read.success and files.addBytesToFile{ directoryType = absolute, filePath = joined, bytes = read.ReturnValue }.success)
	files.deleteFile{ directoryType = absolute, filePath = part }
end
local hashAgain = files.getMD5FromFile{ directoryType = absolute, filePath = joined }.MD5
print("before", hash)
print("after", hashAgain)
assert(hashAgain == hash)

files.deleteFile{ directoryType = absolute, filePath = joined }
files.deleteFile{ directoryType = absolute, filePath = path }
