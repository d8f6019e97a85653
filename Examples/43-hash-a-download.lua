-- A downloaded file is compared with the hash that was promised
-- Run it with: ./corvane run Examples/43-hash-a-download.lua URL

local files, absolute = FileFunctionsCorv, EFileFunctionsCorvDirectoryType.E_ad
local promised = "952d2c56d0485958336747bcdd98590d"
local path = os.tmpname()

local call = CorvaneBPLibrary.CreateHttpRequestGETDownload{
	url = (arg[1] or error("give a URL")) .. "/hello",
	ActionIfFileExists = EHTTPCorvFileDownloadResumeType.E_OVERWRITE,
	DirectoryType = EHTTPCorvFileUpload.E_ad,
	filePathWithFileName = path,
}
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget

target.onhttpRequestCompleteDelegate:Add(function(e)
	assert(e.statusCode == 200, "the request failed")
	local hashed = files.getMD5FromFile{ directoryType = absolute, filePath = path }
	print(hashed.MD5, hashed.MD5 == promised and "as promised" or "not what was promised")
	assert(hashed.success and hashed.MD5 == promised)
	files.deleteFile{ directoryType = absolute, filePath = path }
end)
