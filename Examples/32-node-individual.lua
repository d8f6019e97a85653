-- A request of which the script sets everything, as a latent node: a PATCH with a JSON body
-- Run it with: ./corvane run Examples/32-node-individual.lua URL

local request = {
	url = (arg[1] or error("give a URL")) .. "/echo",
	header = { ["Content-Type"] = "application/json", Accept = "text/plain" },
	verb = "patch",
	contentType = EHTTPCorvIndividualType.STRING,
	content = '{"level":7}',
	OnSuccess = function(e)
		print(e.statusCode, e.dataString)
		assert(e.dataString == 'PATCH {"level":7}')
	end,
	OnFail = function(e) error("the request failed with status " .. e.statusCode) end,
}
AsyncNodeHttpRequest.AsyncExecuteHTTP_Individual_REQUEST(request)

-- A request that cannot be built fails with status 400; the log tells why.
request.verb = "SCATTER"
request.OnSuccess = function() error("there is no such verb") end
request.OnFail = function(e)
	print("refused: " .. e.statusCode)
	assert(e.statusCode == 400)
end
AsyncNodeHttpRequest.AsyncExecuteHTTP_Individual_REQUEST(request)
