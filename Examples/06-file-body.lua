-- A file as the body: it is streamed from disk, and the upload reports its progress
-- Run it with: ./corvane run Examples/06-file-body.lua URL

local path = os.tmpname()
local file = assert(io.open(path, "wb"))
file:write(string.rep("0123456789abcdef", 65536))
file:close()

local call = CorvaneBPLibrary.CreateHttpRequestIndividual{
	url = (arg[1] or error("give a URL")) .. "/size",
	header = { ["Content-Type"] = "application/octet-stream" },
	verb = "PUT",
	contentBodyType = EHTTPCorvIndividualType.STREAM,
	contentBody = path,
	bindUploadProgressEvent = true,
}
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget

local percent
target.onhttpFileUploadDelegate:Add(function(e) percent = e.percentUpload end)
target.onhttpRequestCompleteDelegate:Add(function(e)
	os.remove(path)
	print(e.statusCode, "the server received " .. e.dataString .. " bytes", percent .. " % sent")
	assert(e.dataString == "1048576" and percent == 100)
end)
