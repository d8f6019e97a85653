-- A form whose values hold umlauts, blanks and separators: each goes through urlEncode first
-- Run it with: ./corvane run Examples/64-form-with-umlauts.lua URL

local base = arg[1] or error("give a URL")

local function encoded(text)
	return CorvaneBPLibrary.urlEncode{ string = text }.ReturnValue
end

local call = CorvaneBPLibrary.CreateHttpRequestPOST{
	url = base .. "/echo",
	POSTData = {
		{ "name", encoded("Jörg Müßig") },
		{ "motto", encoded("mehr & mehr = viel") },
	},
}
local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget

target.onhttpRequestCompleteDelegate:Add(function(e)
	print(e.statusCode, e.dataString)
	assert(e.dataString == "POST name=J%C3%B6rg%20M%C3%BC%C3%9Fig&motto=mehr%20%26%20mehr%20%3D%20viel")
end)
