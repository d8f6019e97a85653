-- A Drive file of which nothing can be read: the page is not what it should be, and the status says so
-- Run it with: ./corvane run --drive-base URL Examples/14-unreadable-information.lua

local call = CorvaneBPLibrary.CreateHttpRequestGoogleDriveFileInfo{ downloadID = "unknown" }
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget

target.onhttpRequestCompleteGoogleInfoDelegate:Add(function(e)
	print(e.downloadID, e.statusCode, e.fileSizeInBytes .. " bytes")
	assert(e.statusCode == 452 and e.fileName == "" and e.fileSizeInBytes == 0)
end)
