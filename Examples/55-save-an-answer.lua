-- The bytes of an answer are written to a file in the background
-- Run it with: ./corvane run Examples/55-save-an-answer.lua URL

local path = os.tmpname()
local call = CorvaneBPLibrary.CreateHttpRequestGET{ url = (arg[1] or error("give a URL")) .. "/hello" }
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget
target.onhttpRequestCompleteDelegate:Add(function(e)
	assert(e.statusCode == 200, "the request failed")
	CorvaneBPLibrary.byteDataToFile{
		fileAction = EHTTPCorvFileBytesToFileActionType.E_OVERWRITE,
		byteData = e.byteData,
		directoryType = EHTTPCorvFileUpload.E_ad,
		filePath = path,
	}
end)

-- No event tells that the file is there. A program that ends writes what is queued first.
local function content()
	return FileFunctionsCorv.readStringFromFile{ directoryType = EFileFunctionsCorvDirectoryType.E_ad, filePath = path }.data
end
assert(wait(function() return content() == "Hello!" end, 10), "the file was not written")
print(content())
os.remove(path)
