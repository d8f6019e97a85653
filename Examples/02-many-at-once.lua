-- Several requests at once: they run side by side, and their IDs tell the answers apart
-- Run it with: ./corvane run Examples/02-many-at-once.lua URL

local base = arg[1] or error("give a URL")

-- Each builder hands the records on to the next one.
local records = {}
for number = 1, 5 do
	records = CorvaneBPLibrary.CreateHttpRequestGET{
		otherHttpRequests = records,
		url = base .. "/wait/" .. 600 - 100 * number,
		optionalRequestID = "request " .. number,
	}.httpRequests
end

local finished = {}
CorvaneBPLibrary.getCorvaneTarget().ReturnValue.onhttpRequestCompleteDelegate:Add(function(e)
	print(e.requestID, e.statusCode, e.dataString)
	table.insert(finished, e.requestID)
end)

CorvaneBPLibrary.executeHttpRequests{ httpRequests = records }

-- wait() lets the requests go on until its condition holds, at most for so many seconds.
assert(wait(function() return #finished == #records end, 10), "not all requests ended in time")
assert(finished[1] == "request 5", "the last request has the shortest wait")
