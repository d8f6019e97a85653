-- A file on Drive: its name and size, then its content; the page that asks for a confirmation is answered on the way
-- Run it with: ./corvane run --drive-base URL Examples/12-drive-file.lua

local id = "level"
local target = CorvaneBPLibrary.getCorvaneTarget().ReturnValue
local requests = CorvaneBPLibrary.CreateHttpRequestGoogleDriveFileInfo{ downloadID = id }.httpRequests
requests = CorvaneBPLibrary.CreateHttpRequestGoogleDrive{ otherHttpRequests = requests, downloadID = id }.httpRequests
CorvaneBPLibrary.executeHttpRequests{ httpRequests = requests }

local results = 0
target.onhttpRequestCompleteGoogleInfoDelegate:Add(function(e)
	results = results + 1
	print(e.statusCode, e.fileName, e.fileSizeInBytes .. " bytes")
	assert(e.statusCode == 200 and e.fileName == "level.pak" and e.fileSizeInBytes == 1572864)
end)
target.onhttpRequestCompleteDelegate:Add(function(e)
	results = results + 1
	print(e.statusCode, e.dataString)
	assert(e.statusCode == 200 and e.dataString == "the content of " .. id)
end)
assert(wait(function() return results == 2 end, 60), "the service takes too long")
