-- A download to a file as a latent node, cancelled and resumed; progress comes through the event of all requests
-- Run it with: ./corvane run Examples/33-node-download.lua URL

local url = (arg[1] or error("give a URL")) .. "/file"
local path = os.tmpname()
local target = CorvaneBPLibrary.getCorvaneTarget().ReturnValue
local done = false

local function size()
	return FileFunctionsCorv.fileSize{ directoryType = EFileFunctionsCorvDirectoryType.E_ad, filePath = path }.ReturnValue
end

local function download(action, onSuccess, onFail)
	AsyncNodeHttpDownloadUpload.AsyncExecuteHTTP_Download_REQUEST{
		url = url,
		ActionIfFileExists = action,
		DirectoryType = EHTTPCorvFileUpload.E_ad,
		filePathWithFileName = path,
		optionalRequestID = "level",
		OnSuccess = onSuccess,
		OnFail = onFail,
	}
end

local progress = target.onhttpFileDownloadDelegate:Add(function(e)
	if e.percentDownload > 20 then CorvaneBPLibrary.cancelRequest{ requestID = e.requestID } end
end)

download(EHTTPCorvFileDownloadResumeType.E_OVERWRITE, function() error("it was cancelled") end, function(cancelled)
	print(cancelled.statusCode, size() .. " bytes on disk")
	assert(size() > 0, "the bytes of a cancelled download are kept")
	target.onhttpFileDownloadDelegate:Remove(progress)
	download(EHTTPCorvFileDownloadResumeType.E_RESUME, function(e)
		print(e.statusCode, size() .. " bytes on disk")
		done = true
	end, function(e) error("the download failed with status " .. e.statusCode) end)
end)

assert(wait(function() return done end, 60), "the server takes too long")
assert(size() == 1048576)
os.remove(path)
