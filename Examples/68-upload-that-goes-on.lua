-- A file of any size, piece by piece: it goes on where it was after drops, pauses, cancels, and when the program was killed
-- Run it with: ./corvane run Examples/68-upload-that-goes-on.lua URL

local path = os.tmpname()
local file = assert(io.open(path, "wb"))
file:write(string.rep("recording ", 200000))
file:close()
local url = (arg[1] or error("give a URL")) .. "/files"
local report

local function upload(options)
	report = nil
	options.PieceBytes = 500000
	options.FirstWaitSeconds = 0.1
	options.JournalFolder = path .. ".notes" -- without it, in the project's saved folder
	return CorvaneUploadResumable.UploadResumable{
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

-- The connection breaks off in the first piece; some of it is at the server by then. Somebody gives up in the middle.
local first = upload{ Metadata = { player = "Ada" } }
assert(wait(function() return first:GetReport().TransferredBytes >= 600000 end, 60), "no byte goes")
first:Cancel()
finish()
assert(report.Outcome == ECorvaneTransferOutcome.Cancelled and report.BytesLeft > 0)

-- The same upload asks the server how far it is, and sends the rest. It would do so tomorrow, too.
upload{}
finish()
assert(report.Outcome == ECorvaneTransferOutcome.Succeeded, report.Sentence)
assert(report.TakenOverBytes > 0 and report.TakenOverBytes + report.TransferredBytes == report.TotalBytes)
print(report.TakenOverBytes .. " bytes were there, " .. report.TransferredBytes .. " were sent")

-- At the next start of the game a queue takes up all that were begun and not ended.
local second = upload{}
assert(wait(function() return report or second:GetReport().TransferredBytes > 0 end, 60), "no byte goes")
second:Cancel()
finish()
local queue = CorvaneTransferQueue.GetTransferQueue{ Name = "uploads" }.ReturnValue
local isIdle = false
queue.OnIdle:Add(function() isIdle = true end)
queue:ResumeUploads{ Options = { JournalFolder = path .. ".notes" }, OnlyOrigin = arg[1] }
assert(wait(function() return isIdle end, 60), "the server takes too long")
assert(queue:GetReport().Failed == 0)
print(queue:GetReport().Done .. " taken up")
os.remove(path)
os.remove(path .. ".notes")
