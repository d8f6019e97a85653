-- The content types that uploads are sent with
-- Run it with: ./corvane run Examples/53-mime-types.lua

local types = CorvaneBPLibrary.getMimeTypeMap().ReturnValue
for _, extension in ipairs{ "png", "json", "mp4" } do
	print(extension, types[extension])
end
assert(types.png == "image/png" and types.json == "application/json")

-- The extension counts, in any case; what is in the file does not.
local path = os.tmpname()
os.remove(path)
path = path .. ".PNG"
FileFunctionsCorv.writeStringToFile{ directoryType = EFileFunctionsCorvDirectoryType.E_ad, filePath = path, data = "no picture" }

local file = { directoryType = EHTTPCorvFileUpload.E_ad, filePath = path }
local known = CorvaneBPLibrary.getMimeTypeByFile(file)
print("a file", known.success, known.mimeType)
assert(known.success and known.mimeType == "image/png")

os.remove(path)
assert(not CorvaneBPLibrary.getMimeTypeByFile(file).success, "the file has to be there")
