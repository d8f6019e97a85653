-- Fifty files, eight at a time: each that ends makes room for the next one
-- Run it with: ./corvane run --connections 8 Examples/62-fifty-files.lua URL

local base = arg[1] or error("give a URL")
local number, atATime = 50, 8

local started, running, most, failed = 0, 0, 0, {}

local function startNext()
	if started == number then
		return
	end
	started, running = started + 1, running + 1
	most = math.max(most, running)
	local path = os.tmpname()
	local function ended()
		running = running - 1
		os.remove(path) -- a real script keeps it
		startNext()
	end
	AsyncNodeHttpDownloadUpload.AsyncExecuteHTTP_Download_REQUEST{
		url = base .. "/hello?file=" .. started,
		ActionIfFileExists = EHTTPCorvFileDownloadResumeType.E_OVERWRITE,
		DirectoryType = EHTTPCorvFileUpload.E_ad,
		filePathWithFileName = path,
		OnSuccess = ended,
		OnFail = function(e)
			table.insert(failed, e.requestID)
			ended()
		end,
	}
end

for _ = 1, atATime do
	startNext()
end
assert(wait(function() return running == 0 end, 60), "not all files came in time")
print(started .. " files, at most " .. most .. " at a time, " .. #failed .. " failed")
assert(started == number and most == atATime and #failed == 0)
