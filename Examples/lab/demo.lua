-- What the demo and the examples talk to
-- Run it with: ./corvane lab Examples/lab/demo.lua

lab.at("GET /hello", "Hello!")
lab.at("GET /headers", function(request) return request.head:match("\r\n(.*\r\n)\r\n$") end)
lab.at("POST /echo", function(request) return "POST " .. request.body end)
lab.at("PATCH /echo", function(request) return "PATCH " .. request.body end)
lab.at("POST /json", function(request) return lab.text{ text = '{"saved":' .. request.body .. "}", type = "application/json" } end)
lab.at("PUT /size", lab.upload())
lab.at("GET /events", lab.events{ number = 3, pause = 50 })
lab.at("GET /endless", lab.events{ number = 0, pause = 50 })

-- Slow on purpose: it shows that requests do not wait for each other.
lab.at("GET /wait/*", function(request)
	local milliseconds = request.path:match("^/wait/(%d+)$")
	return milliseconds and { "waited " .. milliseconds .. " ms", lab.stall{ milliseconds = milliseconds } } or lab.status{ code = 404 }
end)

-- An answer for every third request only; the others are told to come back later.
local asked = 0
lab.at("GET /busy", function()
	asked = asked + 1
	return asked % 3 == 0 and "at last" or lab.status{ code = 503, text = "come back later" }
end)

-- The same for uploads, each method by itself.
lab.at("/slot", lab.upload(), lab.status{ code = 503, text = "come back later", requests = 2 })

-- A file of 1 MiB that arrives slowly enough to be cancelled; parts of it may be asked for.
local pieces = {}
for piece = 0, 31 do pieces[#pieces + 1] = string.char(97 + piece % 26):rep(32768) end
local file = lab.file{ bytes = table.concat(pieces) }
lab.at("GET /file", file, lab.pieces{ sizes = { 32768 }, pause = 2 })
-- The same, whose first three answers break off in their middle.
lab.at("GET /breaks-off", file, lab.drop{ after = "50%", requests = 3 })

-- Tells what came: the parts of a form, or the one file that is the body.
local function describe(request)
	local lines = {}
	for _, part in ipairs(request.form) do
		lines[#lines + 1] = part.fileName == "" and part.name .. " = " .. part.bytes
			or part.name .. ": " .. part.fileName .. ", " .. #part.bytes .. " bytes"
	end
	if #lines == 0 then
		local headers = request.headers
		lines[1] = ("%s: %s, %d bytes, %s"):format(headers.fileid, headers.filename, #request.body, headers.mimetype)
	end
	return table.concat(lines, "\r\n") .. "\r\n"
end
lab.at("POST /upload", describe)
lab.at("PUT /upload", describe)

-- A server of resumable uploads, which thinks about each piece. The first one of each upload breaks off in its middle.
local uploads = lab.tus()
lab.at("/files*", uploads)
lab.at("PATCH /files*", uploads, lab.upload{ hangsUpAfter = 300000, requests = 1 }, lab.stall{ milliseconds = 50 })

-- Plays the Drive service: a file, behind a page that asks whether it is wanted in spite of its size.
local askingPage = [[<span class="uc-name-size"><a href="#">level.pak</a> (1,5M)</span>]]
	.. [[<a href="/uc?id=%s&amp;export=download;confirm=t0k3n&amp;x=1">Download anyway</a>]]
	.. [[<form action="/uc" method="get"><input type="hidden" name="id" value="%s"><input type="hidden" name="confirm" value="t0k3n"></form>]]
lab.at("GET /uc", function(request)
	local id = request.query.id or ""
	return request.query.confirm == "t0k3n" and lab.text{ text = "the content of " .. id, type = "application/octet-stream" }
		or lab.text{ text = askingPage:format(id, id), type = "text/html" }
end)
lab.at("GET /file/d/level/view", lab.text{
	text = [[<script>viewer({itemJson:["id","level.pak"]] .. (",null"):rep(25) .. [[,"1572864"]});</script>]],
	type = "text/html",
})
lab.at("GET /page", lab.text{
	text = ([[<html><a id="download-url" class="button" href="%s/hello"><img> Download</a></html>]]):format(lab.url),
	type = "text/html",
})

-- Small files, as many as are asked for.
lab.at("GET /small/*", lab.file{ bytes = ("level "):rep(5000) })

-- Plays a service that answers a question word by word.
local words = { "The", " key", " is", " under", " the", " mat." }
lab.at("POST /chat", function(request)
	local pieces = {}
	for _, word in ipairs(request.body:find("key", 1, true) and words or {}) do
		pieces[#pieces + 1] = ('data: {"choices":[{"delta":{"content":"%s"}}]}\n\n'):format(word)
	end
	return lab.text{ text = table.concat(pieces) .. "data: [DONE]\n\n", type = "text/event-stream" }, lab.pieces{ sizes = { 60 }, pause = 20 }
end)
