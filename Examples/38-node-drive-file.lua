-- A file on Drive by latent nodes: its name and size first, then its content
-- Run it with: ./corvane run --drive-base URL Examples/38-node-drive-file.lua

local id = "level"

local function fetch(size)
	AsyncNodeHttpRequest.AsyncExecuteHTTP_GoogleDrive_REQUEST{
		downloadID = id,
		optionalFileSizeInByte = size,
		OnSuccess = function(e)
			print(e.statusCode, e.dataString)
			assert(e.dataString == "the content of " .. id)
		end,
		OnFail = function(e) error("the download failed with status " .. e.statusCode) end,
	}
end

AsyncNodeHttpGoogleFileInfoRequest.AsyncExecuteHTTP_GoogleFileInfo_REQUEST{
	downloadID = id,
	OnSuccess = function(e)
		print(e.statusCode, e.fileName, e.fileSizeInBytes .. " bytes")
		assert(e.downloadID == id and e.fileName == "level.pak" and e.fileSizeInBytes == 1572864)
		fetch(e.fileSizeInBytes)
	end,
	OnFail = function(e) error("no information: status " .. e.statusCode) end,
}
