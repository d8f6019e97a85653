-- A large file is streamed from disk, bare; what it is called stands in headers
-- Run it with: ./corvane run Examples/23-stream-blank.lua URL

local path = os.tmpname()
local file = assert(io.open(path, "wb"))
file:write(string.rep("0123456789abcdef", 262144))
file:close()

local call = CorvaneBPLibrary.CreateHttpRequestFileUploadPUT{
	url = (arg[1] or error("give a URL")) .. "/upload",
	directoryType = EHTTPCorvFileUpload.E_ad,
	filePath = path,
	fileID = "recording",
	uploadType = EHTTPCorvFileUploadType.PUT_STREAM_BLANK,
}
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget
target.onhttpRequestCompleteDelegate:Add(function(e)
	os.remove(path)
	print(e.statusCode, e.dataArray[1])
	assert(e.dataArray[1] == "recording: " .. path:match("[^/]+$") .. ", 4194304 bytes, application/octet-stream")
end)
