-- A large file in steps as a latent node: its outcome comes after the last step
-- Run it with: ./corvane run Examples/34-node-download-in-steps.lua URL

local path = os.tmpname()

AsyncNodeHttpDownloadUpload.AsyncExecuteHTTP_Low_RAM_Download_REQUEST{
	url = (arg[1] or error("give a URL")) .. "/file",
	ActionIfFileExists = EHTTPCorvFileDownloadResumeType.E_OVERWRITE,
	DirectoryType = EHTTPCorvFileUpload.E_ad,
	filePathWithFileName = path,
	FileSizeStepsInBytes = 262144, -- 10 MiB when left out
	OnSuccess = function(e)
		local size = FileFunctionsCorv.fileSize{ directoryType = EFileFunctionsCorvDirectoryType.E_ad, filePath = path }.ReturnValue
		os.remove(path)
		print(e.statusCode, size .. " bytes on disk")
		assert(e.statusCode == 206 and size == 1048576)
	end,
	OnFail = function(e) error("the download failed with status " .. e.statusCode) end,
}
