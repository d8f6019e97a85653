-- A request is tried again while the server is busy, and each pause is twice the one before
-- Run it with: ./corvane run Examples/63-retry.lua URL

local base = arg[1] or error("give a URL")

--- Waits for the answer to one GET.
local function get(url)
	local answer
	AsyncNodeHttpRequest.AsyncExecuteHTTP_GET_REQUEST{
		url = url,
		OnSuccess = function(e) answer = e end,
		OnFail = function(e) answer = e end,
	}
	assert(wait(function() return answer end, 60), "neither an answer nor a failure")
	return answer
end

--- 500 without a server's head is "nobody answered", 429 and 503 are "later, please": these may go well the next time.
local function mayGoWellLater(answer)
	return answer.statusCode == 429 or answer.statusCode == 503 or (answer.statusCode == 500 and #answer.header == 0)
end

local function getPatiently(url, tries)
	local pause = 0.05 -- seconds; a real script begins with one
	for try = 1, tries do
		local answer = get(url)
		print("try " .. try .. ": " .. answer.statusCode)
		if try == tries or not mayGoWellLater(answer) then
			return answer
		end
		sleep(pause)
		pause = pause * 2
	end
end

assert(getPatiently(base .. "/busy", 5).dataString == "at last")
