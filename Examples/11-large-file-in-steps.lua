-- A large file arrives in steps: never more than one of them is in memory
-- Run it with: ./corvane run Examples/11-large-file-in-steps.lua URL

local path = os.tmpname()
local call = CorvaneBPLibrary.CreateHttpRequestGETLowRamDownload{
	url = (arg[1] or error("give a URL")) .. "/file",
	ActionIfFileExists = EHTTPCorvFileDownloadResumeType.E_OVERWRITE,
	DirectoryType = EHTTPCorvFileUpload.E_ad,
	filePathWithFileName = path,
	FileSizeStepsInBytes = 262144, -- 10 MiB when left out
}
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget

-- The first answer only tells the size; from then on progress counts the whole file.
local percent = 0
target.onhttpFileDownloadDelegate:Add(function(e)
	if e.size > 0.5 then percent = e.percentDownload end
end)
target.onhttpRequestCompleteDelegate:Add(function(e)
	local size = FileFunctionsCorv.fileSize{ directoryType = EFileFunctionsCorvDirectoryType.E_ad, filePath = path }.ReturnValue
	os.remove(path)
	print(e.statusCode, size .. " bytes on disk", percent .. " %")
	assert(e.statusCode == 206 and size == 1048576 and percent == 100)
end)
