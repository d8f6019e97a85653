-- A file and text fields as a form, by a latent node; progress comes through the event of all requests
-- Run it with: ./corvane run Examples/35-node-upload-post.lua URL

local path = os.tmpname()
local file = assert(io.open(path, "wb"))
file:write(string.rep("screenshot", 1000))
file:close()

local percent
local target = CorvaneBPLibrary.getCorvaneTarget().ReturnValue
target.onhttpFileUploadDelegate:Add(function(e) percent = e.percentUpload end)

AsyncNodeHttpDownloadUpload.AsyncExecuteHTTP_Upload_POST_REQUEST{
	url = (arg[1] or error("give a URL")) .. "/upload",
	DirectoryType = EHTTPCorvFileUpload.E_ad,
	filePath = path,
	fileID = "picture",
	POSTData = { player = "Ada" },
	OnSuccess = function(e)
		os.remove(path)
		print(e.statusCode, percent .. " % sent")
		table.sort(e.dataArray)
		for _, line in ipairs(e.dataArray) do
			print("  the server read  " .. line)
		end
		assert(e.dataArray[1] == "picture: " .. path:match("[^/]+$") .. ", 10000 bytes")
		assert(e.dataArray[2] == "player = Ada")
	end,
	OnFail = function(e) error("the upload failed with status " .. e.statusCode) end,
}
