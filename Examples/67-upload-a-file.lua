-- A file as it is, to an address that then holds it: tried again until the server takes it
-- Run it with: ./corvane run Examples/67-upload-a-file.lua URL

local path = os.tmpname()
local file = assert(io.open(path, "wb"))
file:write(string.rep("recording ", 100000))
file:close()
local url = arg[1] or error("give a URL")

local function upload(place, options)
	local report
	CorvaneUploadFile.UploadFile{
		URL = url .. place,
		FilePath = path,
		Options = options,
		OnProgress = function(e) print(e.Report.TransferredBytes - e.Report.RepeatedBytes, "of", e.Report.TotalBytes) end,
		OnSuccess = function(e) report = e.Report end,
		OnFail = function(e) report = e.Report end,
	}
	assert(wait(function() return report end, 60), "the server takes too long")
	print(report.Sentence, report.HowToGoOn)
	return report
end

local sent = upload("/size", { Headers = { ["Content-Type"] = "audio/x-own" } })
assert(sent.Outcome == ECorvaneTransferOutcome.Succeeded and sent.Answer == "1000000")

-- The server is busy twice. A PUT may arrive more than once, so it is sent until it is taken:
local third = upload("/slot", { FirstWaitSeconds = 0.1 })
assert(third.Outcome == ECorvaneTransferOutcome.Succeeded and third.Attempts == 3)

-- A POST may not, unless whoever sends it knows better (bMayBeRepeated):
local once = upload("/slot", { Verb = "POST" })
assert(once.Outcome == ECorvaneTransferOutcome.ServerError and once.Attempts == 1 and once.Code == 503)
os.remove(path)
