-- PUT of one file as a form that is put together in memory
-- Run it with: ./corvane run Examples/22-upload-put.lua URL

local path = os.tmpname()
local file = assert(io.open(path, "wb"))
file:write("the content of the file")
file:close()

local call = CorvaneBPLibrary.CreateHttpRequestFileUploadPUT{
	url = (arg[1] or error("give a URL")) .. "/upload",
	directoryType = EHTTPCorvFileUpload.E_ad,
	filePath = path,
	fileID = "document",
	uploadType = EHTTPCorvFileUploadType.PUT,
}
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget
target.onhttpRequestCompleteDelegate:Add(function(e)
	os.remove(path)
	print(e.statusCode, e.dataArray[1])
	assert(e.dataArray[1] == "document: " .. path:match("[^/]+$") .. ", 23 bytes")
end)
