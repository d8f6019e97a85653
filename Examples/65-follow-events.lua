-- A stream of events is followed: lines are put together, and a stream that has ended is opened again
-- Run it with: ./corvane run Examples/65-follow-events.lua URL

local base = arg[1] or error("give a URL")
local target = CorvaneBPLibrary.getCorvaneTarget().ReturnValue
local wanted, seen = 5, {}

--- Takes whole events out of a text. Returns what is left: the beginning of the next one.
local function takeEvents(text, handle)
	return (text:gsub("(.-)\r?\n\r?\n", function(event)
		local lines = {}
		for data in event:gmatch("data: ?([^\r\n]*)") do
			table.insert(lines, data)
		end
		handle(table.concat(lines, "\n"))
		return ""
	end))
end

local function open()
	local call = CorvaneBPLibrary.CreateHttpRequestGET{
		url = base .. "/events",
		header = { Accept = "text/event-stream" },
		optionalRequestID = "events",
		bindServerSendEvent = true,
	}
	CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }
end

local text = ""
target.onhttpServerSendEventDelegate:Add(function(e)
	text = takeEvents(text .. e.response, function(data) table.insert(seen, data) end)
end)
local streams = 0
target.onhttpRequestCompleteDelegate:Add(function(e)
	streams, text = streams + 1, "" -- an event that was cut short is not one
end)

repeat
	local before = streams
	open()
	wait(function() return streams > before or #seen >= wanted end, 60)
	sleep(0.05) -- a real script waits for seconds: a server that ends each stream at once shall not be stormed
until #seen >= wanted
CorvaneBPLibrary.cancelRequest{ requestID = "events" }

print(#seen .. " events, the last one: " .. seen[#seen])
assert(seen[4] == "message 1" and seen[5] == "message 2")
