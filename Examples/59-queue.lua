-- A queue: twelve files, three at a time, a limit of bytes per second for all, and the most important one first
-- Run it with: ./corvane run Examples/59-queue.lua URL

local url = (arg[1] or error("give a URL")) .. "/small/"
local folder = os.tmpname()
os.remove(folder) -- its name becomes that of a folder

local queue = CorvaneTransferQueue.GetTransferQueue{ Name = "levels" }.ReturnValue
queue:SetLimits{ MostAtOnce = 3, MostPerHost = 3, BytesPerSecond = 2^20 }

local idle, order = false, {}
queue.OnTransferEnd:Add(function(e) print(e.Report.Sentence) end)
queue.OnProgress:Add(function(e) print(e.Report.Bytes .. " bytes", e.Report.Waiting .. " waiting") end)
queue.OnIdle:Add(function() idle = true end)

local function add(name, priority)
	return CorvaneDownloadFile.DownloadFile{
		URL = url .. name,
		FilePath = folder .. "/" .. name,
		Options = { Queue = "levels", Priority = priority },
		OnSuccess = function() table.insert(order, name) end,
	}
end

-- Nothing starts before all are there. Then the important one does, although it came last.
queue:Pause()
for number = 1, 11 do
	add("level-" .. number .. ".pak", 0)
end
add("menu.pak", 1)
assert(queue:IsPaused() and queue:GetReport().Waiting == 12)
queue:Continue()
assert(wait(function() return idle end, 60), "not all files came in time")
assert(#order == 12 and queue:GetReport().Done == 12)

-- Somebody gives up in the middle; the next run of the game takes up what is left in the folder.
idle = false
local large = CorvaneDownloadFile.DownloadFile{
	URL = arg[1] .. "/file",
	FilePath = folder .. "/large.pak",
	Options = { Queue = "levels" },
	OnFail = function(e) print(e.Report.HowToGoOn) end,
}
assert(wait(function() return large:GetReport().TransferredBytes > 100000 end, 60), "no byte comes")
queue:CancelAll()
assert(wait(function() return idle end, 60), "it does not end")
idle = false
queue:SetLimits{}
queue:ResumeFolder{ Folder = folder, Options = {}, OnlyOrigin = arg[1] }
assert(wait(function() return idle end, 60), "the rest did not come in time")
local report = queue:GetReport()
print(report.Done .. " done, " .. report.Failed .. " given up")
assert(report.Done == 13 and report.Failed == 1)

for number = 1, 11 do os.remove(folder .. "/level-" .. number .. ".pak") end
os.remove(folder .. "/menu.pak")
os.remove(folder .. "/large.pak")
os.remove(folder)
