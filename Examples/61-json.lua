-- JSON goes out and comes in: tables become text, and text becomes tables
-- Run it with: ./corvane run Examples/61-json.lua URL

local base = arg[1] or error("give a URL")

local score = {
	player = "Ada",
	points = 9007199254740993, -- whole numbers keep all their digits
	guild = json.null, -- nil would be no key at all
	medals = json.array{}, -- an empty table alone would be an empty object
}
local call = CorvaneBPLibrary.CreateHttpRequestIndividual{
	url = base .. "/json",
	header = { ["Content-Type"] = "application/json", Accept = "application/json" },
	verb = "POST",
	contentBodyType = EHTTPCorvIndividualType.STRING,
	contentBody = json.encode(score),
}
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget

target.onhttpRequestCompleteDelegate:Add(function(e)
	assert(e.statusCode == 200, "the request failed")
	local saved = json.decode(e.dataString).saved
	print(saved.player, saved.points, saved.guild, #saved.medals)
	assert(saved.points == score.points and saved.guild == json.null)
end)
