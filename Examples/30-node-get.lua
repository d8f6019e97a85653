-- A latent node: one call makes a GET request, starts it, and has one of two outcomes
-- Run it with: ./corvane run Examples/30-node-get.lua URL

local url = arg[1] or error("give a URL")

AsyncNodeHttpRequest.AsyncExecuteHTTP_GET_REQUEST{
	url = url .. "/headers",
	header = { Accept = "text/plain" },
	optionalRequestID = "my first node",
	OnSuccess = function(e)
		print(e.requestID, "status " .. e.statusCode)
		for _, line in ipairs(e.data) do
			print("  the server saw  " .. line)
		end
	end,
	OnFail = function(e) error("the request failed with status " .. e.statusCode) end,
}

-- A request that cannot be built is over before its outcomes are bound: the event of all requests tells, inside the call.
local target = CorvaneBPLibrary.getCorvaneTarget().ReturnValue
local refusals = target.onhttpRequestCompleteDelegate:Add(function(e) print(e.requestID, "refused: " .. e.statusCode) end)
AsyncNodeHttpRequest.AsyncExecuteHTTP_GET_REQUEST{ url = "x", optionalRequestID = "no URL" }
target.onhttpRequestCompleteDelegate:Remove(refusals)

-- A page that is not there is a failure, too; the next node may be started from either outcome.
AsyncNodeHttpRequest.AsyncExecuteHTTP_GET_REQUEST{
	url = url .. "/nothing",
	OnSuccess = function() error("there is such a page") end,
	OnFail = function(e)
		print("no page: " .. e.statusCode)
		AsyncNodeHttpRequest.AsyncExecuteHTTP_GET_REQUEST{
			url = url .. "/hello",
			OnSuccess = function(again) print("but here: " .. again.dataString) end,
			OnFail = function() error("no page at all") end,
		}
	end,
}
