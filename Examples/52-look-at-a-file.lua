-- Is there a file, where does a path lead to, and may it be written?
-- Run it with: ./corvane run Examples/52-look-at-a-file.lua

local files, absolute = FileFunctionsCorv, EFileFunctionsCorvDirectoryType.E_ad
local folder = os.tmpname()
os.remove(folder) -- the name serves as that of a directory
local save = { directoryType = absolute, filePath = folder .. "/save.txt" }

assert(files.createDirectory{ directoryType = absolute, path = folder }.ReturnValue)
assert(files.directoryExists{ directoryType = absolute, path = folder }.ReturnValue)
assert(not files.fileExists(save).ReturnValue and files.fileSize(save).ReturnValue == -1)

files.writeStringToFile{ directoryType = absolute, filePath = save.filePath, data = "level 7" }
assert(files.fileExists(save).ReturnValue)
print("size", files.fileSize(save).ReturnValue)

-- Every function resolves its path like this.
local detour = { directoryType = absolute, filePath = folder .. "/./old/../save.txt" }
assert(files.getCleanDirectory(detour).ReturnValue == save.filePath)
assert(files.getFilenameOnDisk(detour).ReturnValue == save.filePath)
assert(files.getCleanDirectory{ directoryType = EFileFunctionsCorvDirectoryType.E_gd }.ReturnValue:sub(1, 1) == "/")

-- A read-only file can be neither replaced nor deleted.
assert(files.setReadOnly{ directoryType = absolute, filePath = save.filePath, bNewReadOnlyValue = true }.ReturnValue)
print("read-only", files.isReadOnly(save).ReturnValue)
assert(files.isReadOnly(save).ReturnValue and not files.deleteFile(save).ReturnValue)
assert(files.setReadOnly{ directoryType = absolute, filePath = save.filePath, bNewReadOnlyValue = false }.ReturnValue)

assert(files.deleteFile(save).ReturnValue)
assert(files.deleteDirectory{ directoryType = absolute, filePath = folder }.ReturnValue)
print("all gone", not files.directoryExists{ directoryType = absolute, path = folder }.ReturnValue)
