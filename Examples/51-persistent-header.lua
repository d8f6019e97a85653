-- A header that every request carries, until it is removed; a request may have its own instead
-- Run it with: ./corvane run Examples/51-persistent-header.lua URL

local url = (arg[1] or error("give a URL")) .. "/headers"

local function tokenSeen(header)
	local call = CorvaneBPLibrary.CreateHttpRequestGET{ url = url, header = header or {} }
	local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget
	local lines
	local handler = target.onhttpRequestCompleteDelegate:Add(function(e) lines = e.dataArray end)
	assert(wait(function() return lines end, 10), "no answer")
	target.onhttpRequestCompleteDelegate:Remove(handler)
	for _, line in ipairs(lines) do
		if line:lower():find("^x%-token: ") then return line:match(": (.*)") end
	end
end

CorvaneBPLibrary.addPersistentHTTPRequestHeader{ id = "X-Token", value = "of the session" }
local first, second = tokenSeen(), tokenSeen{ ["x-token"] = "its own" }
CorvaneBPLibrary.removePersistentHTTPRequestHeader{ id = "X-Token" }
local third = tokenSeen()

print(first, second, third)
assert(first == "of the session" and second == "its own" and third == nil)
