-- A request of which the script sets everything: here a PATCH with a JSON body
-- Run it with: ./corvane run Examples/05-individual-patch.lua URL

local call = CorvaneBPLibrary.CreateHttpRequestIndividual{
	url = (arg[1] or error("give a URL")) .. "/echo",
	header = { ["Content-Type"] = "application/json", Accept = "text/plain" },
	verb = "patch",
	contentBodyType = EHTTPCorvIndividualType.STRING,
	contentBody = '{"level":7}',
}
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget
target.onhttpRequestCompleteDelegate:Add(function(e)
	print(e.statusCode, e.dataString)
	assert(e.dataString == 'PATCH {"level":7}')
end)
