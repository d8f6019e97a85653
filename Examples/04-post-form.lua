-- A POST with form fields, and a header that goes into every request
-- Run it with: ./corvane run Examples/04-post-form.lua URL

local url = (arg[1] or error("give a URL")) .. "/echo"

CorvaneBPLibrary.addPersistentHTTPRequestHeader{ id = "X-Game", value = "demo" }

-- Fields are sent as they are; what could be taken for a separator goes through urlEncode.
local call = CorvaneBPLibrary.CreateHttpRequestPOST{
	url = url,
	POSTData = {
		{ "player", "Ada" },
		{ "motto", CorvaneBPLibrary.urlEncode{ string = "more & more" }.ReturnValue },
	},
}
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget
target.onhttpRequestCompleteDelegate:Add(function(e)
	print(e.statusCode, e.dataString)
	assert(e.dataString == "POST player=Ada&motto=more%20%26%20more")
end)

-- The header has gone into the request already; later ones are without it.
CorvaneBPLibrary.removePersistentHTTPRequestHeader{ id = "X-Game" }
