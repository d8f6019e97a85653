-- The page of a file is followed to the file behind it
-- Run it with: ./corvane run Examples/13-file-page.lua URL

local call = CorvaneBPLibrary.CreateHttpRequestAnonfiles{ url = (arg[1] or error("give a URL")) .. "/page" }
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget
target.onhttpRequestCompleteDelegate:Add(function(e)
	print(e.statusCode, e.dataString)
	assert(e.statusCode == 200 and e.dataString == "Hello!")
end)
