-- Several files in one request, each under a field name of its own; by POST and by PUT
-- Run it with: ./corvane run Examples/21-upload-several.lua URL

local url = (arg[1] or error("give a URL")) .. "/upload"

local paths = {}
for number = 1, 3 do
	paths[number] = os.tmpname()
	local file = assert(io.open(paths[number], "wb"))
	file:write(string.rep("x", number * 100))
	file:close()
end

local form = {
	url = url,
	directoryType = EHTTPCorvFileUpload.E_ad,
	filePaths = paths,
	fileIDs = { "first", "second", "third" },
}
form.optionalRequestID = "by POST"
form.otherHttpRequests = CorvaneBPLibrary.CreateHttpRequestFileMultiUploadPOST(form).httpRequests
form.optionalRequestID = "by PUT"
local call = CorvaneBPLibrary.CreateHttpRequestFileMultiUploadPUT(form)
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget

local finished = 0
target.onhttpRequestCompleteDelegate:Add(function(e)
	finished = finished + 1
	print(e.requestID, e.statusCode)
	for number, field in ipairs(form.fileIDs) do
		print("  " .. e.dataArray[number])
		assert(e.dataArray[number] == field .. ": " .. paths[number]:match("[^/]+$") .. ", " .. number * 100 .. " bytes")
	end
end)
assert(wait(function() return finished == 2 end, 10), "not all uploads ended in time")
for _, path in ipairs(paths) do
	os.remove(path)
end
