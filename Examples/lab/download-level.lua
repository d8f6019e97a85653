-- Downloads a level over whatever network there is: it resumes, waits longer after each failure, and believes only the hash
-- Run it with: ./corvane lab Examples/lab/lossy-train.lua --run Examples/lab/download-level.lua

local url = arg[1] or error("give a URL")
local absolute = EFileFunctionsCorvDirectoryType.E_ad
local path = os.tmpname()
local answer

CorvaneBPLibrary.getCorvaneTarget().ReturnValue.onhttpRequestCompleteDelegate:Add(function(e) answer = e end)

-- Starts one request and waits for its end.
local function complete(call)
	answer = nil
	CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }
	assert(wait(function() return answer end, 30), "no end of the request")
	return answer
end

local function download()
	return complete(CorvaneBPLibrary.CreateHttpRequestGETDownload{
		url = url .. "/level.pak",
		ActionIfFileExists = EHTTPCorvFileDownloadResumeType.E_RESUME,
		DirectoryType = EHTTPCorvFileUpload.E_ad,
		filePathWithFileName = path,
	})
end

local function promisedHash()
	local e = complete(CorvaneBPLibrary.CreateHttpRequestGET{ url = url .. "/level.md5" })
	return e.statusCode == 200 and e.dataString:match("^%x+$") and e.dataString
end

local function hash()
	return FileFunctionsCorv.getMD5FromFile{ directoryType = absolute, filePath = path }.MD5
end

-- A page where a hash should be: something between here and the server wants to be seen first.
local function agree()
	return complete(CorvaneBPLibrary.CreateHttpRequestPOST{ url = url .. "/agree" })
end

local pause = 0.02 -- seconds; a game would begin with one or two
for attempt = 1, 10 do
	local promised = promisedHash()
	local e = promised and download() or agree()
	print(attempt, e.statusCode, FileFunctionsCorv.fileSize{ directoryType = absolute, filePath = path }.ReturnValue .. " bytes on disk")
	if promised and e.statusCode < 300 then
		if hash() == promised then
			print("the level is complete")
			os.remove(path)
			os.exit(0)
		end
		os.remove(path) -- not what was promised: begin again
	end
	wait(function() end, pause)
	pause = pause * 2
end
error("the level did not come")
