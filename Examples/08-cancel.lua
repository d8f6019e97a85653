-- Cancel: a request without end is stopped after its first bytes
-- Run it with: ./corvane run Examples/08-cancel.lua URL

local call = CorvaneBPLibrary.CreateHttpRequestGET{
	url = (arg[1] or error("give a URL")) .. "/endless",
	optionalRequestID = "endless",
}
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget

target.onhttpFileDownloadDelegate:Add(function(e)
	CorvaneBPLibrary.cancelRequest{ requestID = e.requestID }
end)
target.onhttpRequestCompleteDelegate:Add(function(e)
	print(e.requestID, e.statusCode, e.dataString)
	assert(e.statusCode == 500, "a cancelled request ends as failed")
end)
