-- A GET request with a header of its own, and the answer as an event
-- Run it with: ./corvane run Examples/01-get.lua URL

local url = (arg[1] or error("give a URL")) .. "/headers"

-- A builder makes a record of the request and starts nothing yet.
local call = CorvaneBPLibrary.CreateHttpRequestGET{
	url = url,
	header = { Accept = "text/plain" },
	optionalRequestID = "my first request",
}

-- Starting the records gives the object that carries the events of all requests.
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget

-- Events arrive between the lines of the script at the earliest, so it is not too late to listen.
target.onhttpRequestCompleteDelegate:Add(function(e)
	print(e.requestID, "status " .. e.statusCode)
	for _, line in ipairs(e.dataArray) do
		print("  the server saw  " .. line)
	end
	assert(e.statusCode == 200, "the request failed")
end)

-- The program goes on until nothing is pending; a script that needs the answer itself calls wait().
