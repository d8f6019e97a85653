-- Several files in one request by latent nodes; by POST and by PUT
-- Run it with: ./corvane run Examples/37-node-upload-several.lua URL

local paths = {}
for number = 1, 3 do
	paths[number] = os.tmpname()
	local file = assert(io.open(paths[number], "wb"))
	file:write(string.rep("x", number * 100))
	file:close()
end

local finished = 0
local upload = {
	url = (arg[1] or error("give a URL")) .. "/upload",
	DirectoryType = EHTTPCorvFileUpload.E_ad,
	filePaths = paths,
	fileIDs = { "first", "second", "third" },
}
upload.OnSuccess = function(e)
	finished = finished + 1
	print(e.requestID, e.statusCode)
	for number, field in ipairs(upload.fileIDs) do
		print("  " .. e.dataArray[number])
		assert(e.dataArray[number] == field .. ": " .. paths[number]:match("[^/]+$") .. ", " .. number * 100 .. " bytes")
	end
end
upload.OnFail = function(e) error("the upload failed with status " .. e.statusCode) end

upload.optionalRequestID = "by POST"
AsyncNodeHttpDownloadUpload.AsyncExecuteHTTP_Multi_Upload_POST_REQUEST(upload)
upload.optionalRequestID = "by PUT"
AsyncNodeHttpDownloadUpload.AsyncExecuteHTTP_Multi_Upload_PUT_REQUEST(upload)

assert(wait(function() return finished == 2 end, 10), "not all uploads ended in time")
for _, path in ipairs(paths) do
	os.remove(path)
end
