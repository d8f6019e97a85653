-- A token goes into the header of the requests that need it, and comes from outside the script
-- Run it with: ./corvane run Examples/60-token.lua URL

local base = arg[1] or error("give a URL")
local token = os.getenv("GAME_TOKEN") or "a-token-for-the-demo"

local call = CorvaneBPLibrary.CreateHttpRequestGET{
	url = base .. "/headers",
	header = { Authorization = "Bearer " .. token, Accept = "text/plain" },
}
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget

target.onhttpRequestCompleteDelegate:Add(function(e)
	if e.statusCode == 401 or e.statusCode == 403 then
		error("the server does not take the token")
	end
	print(e.statusCode, "the server has seen the token")
	assert(e.dataString:find("Authorization: Bearer " .. token, 1, true))
end)
