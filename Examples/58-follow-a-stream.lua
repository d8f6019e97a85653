-- A stream of events followed over any number of connections, with a header that is set anew for each
-- Run it with: ./corvane run Examples/58-follow-a-stream.lua URL

local url = (arg[1] or error("give a URL")) .. "/events"
local seen, tries = {}, 0
local closed

local stream
stream = CorvaneFollowEvents.FollowEvents{
	URL = url,
	Options = { ReconnectSeconds = 0.01 },
	OnBeforeAttempt = function()
		tries = tries + 1
		if stream then
			stream:SetHeader{ Name = "Authorization", Value = "Bearer token-" .. tries }
		end
	end,
	OnEvent = function(e)
		table.insert(seen, e.Data)
		print(e.Type, e.Data, stream:GetLastEventID())
		if #seen == 5 then
			stream:Cancel()
		end
	end,
	OnClose = function(e) closed = e.Report end,
}
assert(wait(function() return closed end, 60), "the server takes too long")
print(closed.Sentence)
assert(#seen == 5 and tries == 2 and not stream:IsPaused())
