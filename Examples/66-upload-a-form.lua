-- Files and fields as a form that every server reads; the files are read while they are sent, and nothing else
-- Run it with: ./corvane run Examples/66-upload-a-form.lua URL

local function write(bytes)
	local path = os.tmpname()
	local file = assert(io.open(path, "wb"))
	file:write(bytes)
	file:close()
	return path
end

local picture, log = write(string.rep("screenshot", 100000)), write("it crashed\n")
local report

CorvaneUploadForm.UploadForm{
	URL = (arg[1] or error("give a URL")) .. "/upload",
	Files = {
		{ FieldName = "picture", FilePath = picture, FileName = "crash \"1\".png" },
		{ FieldName = "log", FilePath = log, ContentType = "text/plain" },
	},
	Fields = {
		{ Name = "player", Value = "Ada" },
		{ Name = "tag", Value = "crash" },
		{ Name = "tag", Value = "level 7" },
	},
	Options = { Hash = "sha256" },
	OnProgress = function(e) print(e.Report.TransferredBytes, "of", e.Report.TotalBytes) end,
	OnSuccess = function(e) report = e.Report end,
	OnFail = function(e) error(e.Report.Sentence .. " " .. e.Report.HowToGoOn) end,
}
assert(wait(function() return report end, 60), "the server takes too long")
print(report.Sentence, "sha256 " .. report.Hash)
print(report.Answer)
local expected = {
	"player = Ada", "tag = crash", "tag = level 7", "picture: crash %221%22.png, 1000000 bytes",
	("log: %s, 11 bytes"):format(log:match("[^/]+$")),
}
assert(report.Answer == table.concat(expected, "\r\n") .. "\r\n", "the server read something else")
assert(report.Attempts == 1 and report.TransferredBytes == report.TotalBytes)
os.remove(picture)
os.remove(log)
