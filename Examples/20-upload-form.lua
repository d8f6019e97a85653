-- A file goes to a server like from the form of a web page, with text fields beside it
-- Run it with: ./corvane run Examples/20-upload-form.lua URL

local path = os.tmpname()
local file = assert(io.open(path, "wb"))
file:write(string.rep("screenshot", 1000))
file:close()

-- A script learns the content type that a file will be sent with from the extension of its name.
os.rename(path, path .. ".png")
path = path .. ".png"
local mime = CorvaneBPLibrary.getMimeTypeByFile{ directoryType = EHTTPCorvFileUpload.E_ad, filePath = path }
assert(mime.success and mime.mimeType == "image/png")

local call = CorvaneBPLibrary.CreateHttpRequestFileUploadPOST{
	url = (arg[1] or error("give a URL")) .. "/upload",
	directoryType = EHTTPCorvFileUpload.E_ad,
	filePath = path,
	fileID = "picture", -- like <input type="file" name="picture">
	POSTData = { { "player", "Ada" }, { "level", "7" } },
	optionalRequestID = "form",
}
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget

local percent
target.onhttpFileUploadDelegate:Add(function(e) percent = e.percentUpload end)
target.onhttpRequestCompleteDelegate:Add(function(e)
	os.remove(path)
	print(e.requestID, e.statusCode, percent .. " % sent")
	table.sort(e.dataArray)
	for _, line in ipairs(e.dataArray) do
		print("  the server read  " .. line)
	end
	assert(e.dataArray[1] == "level = 7")
	assert(e.dataArray[2] == "picture: " .. path:match("[^/]+$") .. ", 10000 bytes")
	assert(e.dataArray[3] == "player = Ada")
end)
