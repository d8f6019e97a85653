-- A POST with form fields as a latent node
-- Run it with: ./corvane run Examples/31-node-post.lua URL

AsyncNodeHttpRequest.AsyncExecuteHTTP_POST_REQUEST{
	url = (arg[1] or error("give a URL")) .. "/echo",
	POSTData = {
		{ "player", "Ada" },
		{ "motto", CorvaneBPLibrary.urlEncode{ string = "more & more" }.ReturnValue },
	},
	OnSuccess = function(e)
		print(e.statusCode, e.dataString)
		assert(e.dataString == "POST player=Ada&motto=more%20%26%20more")
	end,
	OnFail = function(e) error("the request failed with status " .. e.statusCode) end,
}
