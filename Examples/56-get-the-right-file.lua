-- The right file or a reason: checked by its hash, through pauses, cancels and broken connections
-- Run it with: ./corvane run Examples/56-get-the-right-file.lua URL

local url = (arg[1] or error("give a URL")) .. "/breaks-off"
local path = os.tmpname()
local report

local function download(options)
	report = nil
	return CorvaneDownloadFile.DownloadFile{
		URL = url,
		FilePath = path,
		Options = options,
		OnProgress = function(e) print(e.Report.TakenOverBytes + e.Report.TransferredBytes, "of", e.Report.TotalBytes) end,
		OnSuccess = function(e) report = e.Report end,
		OnFail = function(e) report = e.Report end,
	}
end

local function finish()
	assert(wait(function() return report end, 60), "the server takes too long")
	print(report.Sentence, report.HowToGoOn)
end

-- Somebody pauses it, goes on, and then gives up.
local first = download{ FirstWaitSeconds = 0.1, BytesPerSecond = 2^20 }
assert(wait(function() return first:GetReport().TransferredBytes > 0 end, 60), "no byte comes")
first:Pause()
assert(wait(function() return first:IsPaused() end, 60), "it does not pause")
first:Continue()
first:Cancel()
finish()
assert(report.Outcome == ECorvaneTransferOutcome.Cancelled and report.BytesLeft > 0)

-- The same download goes on with what is on disk, also when the program was killed in between. In the middle of the file the
-- connection breaks off.
local kept = report.BytesLeft
download{
	FirstWaitSeconds = 0.1,
	Hash = "sha256:fe06826d2426b5f7b421f314efd9e5d6b9d859c8aaf8271ec39aafa1bba39f1d",
}
finish()
assert(report.Outcome == ECorvaneTransferOutcome.Succeeded, report.Sentence)
assert(report.TakenOverBytes == kept and report.TransferredBytes == report.TotalBytes - kept, "a byte came twice")
assert(report.Attempts > 1 and report.Restarts == 0)
print(report.Attempts .. " requests, " .. report.Restarts .. " restarts, sha256 " .. report.Hash)
os.remove(path)
