-- A chat completion: asked with POST, and answered piece by piece
-- Run it with: ./corvane run Examples/69-chat.lua URL

local url = (arg[1] or error("give a URL")) .. "/chat"
local answer, closed = "", nil

CorvaneFollowEvents.FollowEvents{
	URL = url,
	Options = {
		bPost = true,
		Body = json.encode{ stream = true, messages = { { role = "user", content = "Where is the key?" } } },
		Headers = { Authorization = "Bearer secret" },
		bReconnect = false, -- or it would be asked twice
	},
	OnEvent = function(e)
		if e.Data ~= "[DONE]" then
			answer = answer .. (json.decode(e.Data).choices[1].delta.content or "")
			print(answer)
		end
	end,
	OnClose = function(e) closed = e.Report end,
}
assert(wait(function() return closed end, 60), "the server takes too long")
assert(closed.Outcome == ECorvaneTransferOutcome.Ended, closed.Sentence)
assert(answer == "The key is under the mat.")
