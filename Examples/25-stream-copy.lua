-- The same with a copy of the file, for files that must not be touched; the copy is deleted after the upload
-- Run it with: ./corvane run Examples/25-stream-copy.lua URL

local path = os.tmpname()
local file = assert(io.open(path, "wb"))
file:write(string.rep("x", 100000))
file:close()

local call = CorvaneBPLibrary.CreateHttpRequestFileUploadPUT{
	url = (arg[1] or error("give a URL")) .. "/upload",
	directoryType = EHTTPCorvFileUpload.E_ad,
	filePath = path,
	fileID = "save",
	uploadType = EHTTPCorvFileUploadType.PUT_STREAM_COPY,
}
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget
target.onhttpRequestCompleteDelegate:Add(function(e)
	os.remove(path)
	print(e.statusCode, e.dataArray[1])
	assert(e.dataArray[1] == "save: " .. path:match("[^/]+$") .. ", 100000 bytes", "the server sees the name of the original")
end)
