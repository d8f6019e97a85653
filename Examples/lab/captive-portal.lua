-- A hotel's network: every address answers 200 with the same page, until the guest has agreed to it
-- Run it with: ./corvane lab Examples/lab/captive-portal.lua --run Examples/lab/download-level.lua

local level = string.rep("a level of the game\n", 20000)
local page = lab.text{ type = "text/html", text = '<form method="post" action="/agree"><button>I agree</button></form>' }
local agreed = false

local function behindThePortal(behaviour)
	return function() return agreed and behaviour or page end
end

lab.at("*", page)
lab.at("/level.md5", behindThePortal(lab.md5(level)))
lab.at("/level.pak", behindThePortal(lab.file{ bytes = level }))
lab.at("POST /agree", function() agreed = true return "welcome" end)
