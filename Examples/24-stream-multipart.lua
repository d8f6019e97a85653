-- A large file is streamed from disk as a form; the form's end stands in the file while it travels, and goes afterwards
-- Run it with: ./corvane run Examples/24-stream-multipart.lua URL

local path = os.tmpname()
local content = string.rep("0123456789abcdef", 65536)
local file = assert(io.open(path, "wb"))
file:write(content)
file:close()

local function contentNow()
	local reader = assert(io.open(path, "rb"))
	local bytes = reader:read("a")
	reader:close()
	return bytes
end

local call = CorvaneBPLibrary.CreateHttpRequestFileUploadPUT{
	url = (arg[1] or error("give a URL")) .. "/upload",
	directoryType = EHTTPCorvFileUpload.E_ad,
	filePath = path,
	fileID = "recording",
	uploadType = EHTTPCorvFileUploadType.PUT_STREAM_MP,
}
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget
print("while it travels the file has " .. #contentNow() - #content .. " bytes more")

local answer
target.onhttpRequestCompleteDelegate:Add(function(e)
	answer = e.dataArray[1]
	print(e.statusCode, answer)
end)

-- The repair comes two seconds after the end of the upload.
assert(wait(function() return answer and contentNow() == content end, 20), "the file did not become what it was")
print("now it is as before")
os.remove(path)
assert(answer == "recording: " .. path:match("[^/]+$") .. ", 1048576 bytes")
