-- A train ride: slow, with tunnels, and connections that break off
-- Run it with: ./corvane lab Examples/lab/lossy-train.lua --run Examples/lab/download-level.lua

local level = string.rep("a level of the game\n", 20000)

lab.at("/level.md5", lab.md5(level), lab.drop{ chance = 0.5, seed = 5 })
lab.at("/level.pak",
	lab.file{ bytes = level },
	lab.rate{ bytes = 800000 },
	lab.stall{ after = "50%", milliseconds = 100 },
	lab.inTurn{
		lab.drop{ after = "40%" },
		lab.drop(),
		lab.status{ code = 503, retryAfter = 1, text = "no signal" },
		lab.drop{ after = 1000, resets = true },
		{}, -- open land
	})
