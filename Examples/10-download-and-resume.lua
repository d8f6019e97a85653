-- A download that is cancelled keeps its bytes; the next one with E_RESUME asks only for the rest
-- Run it with: ./corvane run Examples/10-download-and-resume.lua URL

local url = (arg[1] or error("give a URL")) .. "/file"
local path = os.tmpname()
local target = CorvaneBPLibrary.getCorvaneTarget().ReturnValue

local function download(action)
	local call = CorvaneBPLibrary.CreateHttpRequestGETDownload{
		url = url,
		ActionIfFileExists = action,
		DirectoryType = EHTTPCorvFileUpload.E_ad,
		filePathWithFileName = path,
	}
	CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }
	return call.requestID
end

local function size()
	return FileFunctionsCorv.fileSize{ directoryType = EFileFunctionsCorvDirectoryType.E_ad, filePath = path }.ReturnValue
end

local first = download(EHTTPCorvFileDownloadResumeType.E_OVERWRITE)
local progress = target.onhttpFileDownloadDelegate:Add(function(e)
	if e.percentDownload > 20 then CorvaneBPLibrary.cancelRequest{ requestID = first } end
end)

local codes = {}
target.onhttpRequestCompleteDelegate:Add(function(e)
	codes[#codes + 1] = e.statusCode
	print(e.statusCode, size() .. " bytes on disk")
	if #codes == 1 then
		assert(size() > 0, "the bytes of a cancelled download are kept")
		target.onhttpFileDownloadDelegate:Remove(progress)
		download(EHTTPCorvFileDownloadResumeType.E_RESUME) -- the file is closed by now
	end
end)

assert(wait(function() return #codes == 2 end, 60), "the server takes too long")
assert(codes[1] == 500 and codes[2] == 206 and size() == 1048576)
os.remove(path)
