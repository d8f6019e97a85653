-- What a script sees when a request fails: always a completion, with a status that says why
-- Run it with: ./corvane run Examples/03-when-it-fails.lua URL

local base = arg[1] or error("give a URL")
local target = CorvaneBPLibrary.getCorvaneTarget().ReturnValue

local function statusOf(url)
	local status
	local handler = target.onhttpRequestCompleteDelegate:Add(function(e) status = e.statusCode end)
	local call = CorvaneBPLibrary.CreateHttpRequestGET{ url = url }
	CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }
	assert(wait(function() return status end, 30), "no completion")
	target.onhttpRequestCompleteDelegate:Remove(handler)
	return status
end

local missing = statusOf(base .. "/no/such/page")
print(missing, "the server has no such page")
assert(missing == 404)

local unanswered = statusOf("http://127.0.0.1:1/")
print(unanswered, "nobody answers there")
assert(unanswered == 500)

local refused = statusOf("x")
print(refused, "the builder refused: that is no URL")
assert(refused == 400)

-- A mistake in the script itself is an error that names the function, the pin and what it takes.
print(select(2, pcall(CorvaneBPLibrary.CreateHttpRequestGET, { url = 5 })))
