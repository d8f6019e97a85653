-- A server that dies at 90 % of the file, is away for a while, and comes back with another version of it
-- Run it with: ./corvane lab Examples/lab/dies-at-90-percent.lua --run Examples/lab/download-level.lua

local old = string.rep("a level of the game\n", 20000)
local patched = string.rep("a level of the same size\n", 16000)

lab.at("/level.md5", lab.inTurn{ lab.md5(old), lab.md5(patched) })
lab.at("/level.pak",
	lab.file{ bytes = old, newBytes = patched, changesAt = 4 },
	lab.drop{ after = "90%", requests = 1 },
	lab.inTurn{ {}, lab.drop(), lab.drop(), {} })
