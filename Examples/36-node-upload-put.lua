-- PUT of one file by latent nodes: as a form in memory, and as a stream from the disk
-- Run it with: ./corvane run Examples/36-node-upload-put.lua URL

local path = os.tmpname()
local file = assert(io.open(path, "wb"))
file:write("the content of the file")
file:close()

local upload = {
	url = (arg[1] or error("give a URL")) .. "/upload",
	DirectoryType = EHTTPCorvFileUpload.E_ad,
	filePath = path,
	fileID = "document",
}
local sent = 0
local name = path:match("[^/]+$")
local expected = {
	PUT = "document: " .. name .. ", 23 bytes",
	PUT_STREAM_BLANK = "document: " .. name .. ", 23 bytes, application/octet-stream",
}
for kind, line in pairs(expected) do
	upload.uploadType = EHTTPCorvFileUploadType[kind]
	upload.optionalRequestID = kind
	upload.OnSuccess = function(e)
		sent = sent + 1
		print(e.requestID, e.dataArray[1])
		assert(e.dataArray[1] == line)
	end
	upload.OnFail = function(e) error("the upload failed with status " .. e.statusCode) end
	AsyncNodeHttpDownloadUpload.AsyncExecuteHTTP_Upload_PUT_REQUEST(upload)
end
assert(wait(function() return sent == 2 end, 10), "not all uploads ended in time")
os.remove(path)
