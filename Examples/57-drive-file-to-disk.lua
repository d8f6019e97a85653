-- A Drive file to disk, through the page that asks before it gives large files
-- Run it with: ./corvane run --drive-base URL Examples/57-drive-file-to-disk.lua

local path = os.tmpname()
local report

CorvaneDownloadFile.DownloadDriveFile{
	FileID = "level",
	FilePath = path,
	OnSuccess = function(e) report = e.Report end,
	OnFail = function(e) error(e.Report.Sentence) end,
}
assert(wait(function() return report end, 60), "the server takes too long")
print(report.Sentence)
assert(io.open(path):read("a") == "the content of level")
os.remove(path)
