-- Server-sent events: the answer is delivered in pieces while it grows
-- Run it with: ./corvane run Examples/07-server-sent-events.lua URL

local call = CorvaneBPLibrary.CreateHttpRequestGET{
	url = (arg[1] or error("give a URL")) .. "/events",
	bindServerSendEvent = true,
}
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget

-- A piece is what has arrived since the last one; it may hold half an event or several.
local text = ""
target.onhttpServerSendEventDelegate:Add(function(e)
	text = text .. e.response
	text = text:gsub("data: ([^\n]*)\n\n", function(data) print("event", data) return "" end)
end)
target.onhttpRequestCompleteDelegate:Add(function(e)
	print(e.statusCode, "the server has ended the stream")
	assert(e.statusCode == 200 and text == "")
end)
