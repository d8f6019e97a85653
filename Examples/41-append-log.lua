-- A log that grows line by line, and that is put aside when it gets too long
-- Run it with: ./corvane run Examples/41-append-log.lua

local files, absolute = FileFunctionsCorv, EFileFunctionsCorvDirectoryType.E_ad
local folder = os.tmpname()
os.remove(folder) -- the name serves as that of a directory

local log, old = folder .. "/game.log", folder .. "/game.old.log"

local function write(line)
	-- A line that finds no room is not written in part: the file keeps what it had.
	assert(files.addBytesToFile{ directoryType = absolute, filePath = log, bytes = line .. "\n" }.success)
	if files.fileSize{ directoryType = absolute, filePath = log }.ReturnValue > 100 then
		-- moveFile never replaces, so the older log goes first. The target is named before the source.
		files.deleteFile{ directoryType = absolute, filePath = old }
		assert(files.moveFile{ directoryTypeTo = absolute, filePathTo = old, directoryTypeFrom = absolute, filePathFrom = log }.ReturnValue)
	end
end

for number = 1, 8 do
	write("level " .. number .. " finished")
end

for _, path in ipairs{ old, log } do
	local read = files.readStringFromFile{ directoryType = absolute, filePath = path }
	assert(read.success)
	io.write(path:match("[^/]*$"), ":\n", read.data)
end
local changed = files.getTimeStamp{ directoryType = absolute, filePath = log }.ReturnValue
assert(changed > "2024" and changed:match("^%d+%-%d%d%-%d%dT%d%d:%d%d:%d%d%.%d%d%dZ$"), changed)

for _, path in ipairs{ old, log } do
	files.deleteFile{ directoryType = absolute, filePath = path }
end
assert(files.deleteDirectory{ directoryType = absolute, filePath = folder }.ReturnValue)
