#include "Lab/Wire/RequestReader.h"

#include "Lab/Plans/Md5.h"

#include <algorithm>
#include <stdexcept>

namespace Lab
{
	const http_parser_settings RequestReader::settings = []
	{
		http_parser_settings made{};
		made.on_url = takeTarget;
		made.on_header_field = takeName;
		made.on_header_value = takeValue;
		made.on_headers_complete = endHead;
		made.on_body = takeChunkedBody;
		made.on_message_complete = endMessage;
		return made;
	}();

	RequestReader::RequestReader()
		: parser()
		, current(std::make_shared<Request>())
	{
	}

	RequestReader::~RequestReader() = default;

	bool RequestReader::readHead()
	{
		constexpr std::string_view emptyLine = "\r\n\r\n";
		unread.erase(0, unread.find_first_not_of("\r\n")); // some clients send an empty line behind a body
		const std::size_t end = unread.find(emptyLine);
		if (end == unread.npos)
		{
			return false;
		}
		current = std::make_shared<Request>();
		digest.reset();
		isNameOpen = isMessageOver = false;
		current->head = unread.substr(0, end + emptyLine.size());
		unread.erase(0, current->head.size());
		http_parser_init(&parser, HTTP_REQUEST);
		parser.data = this;
		isInHead = true;
		const std::size_t parsed = http_parser_execute(&parser, &settings, current->head.data(), current->head.size());
		isInHead = false;
		const auto error = static_cast<http_errno>(parser.http_errno);
		if (error != HPE_OK && error != HPE_CB_url && error != HPE_CB_body)
		{
			throw std::invalid_argument(http_errno_description(error));
		}
		if (error != HPE_OK || (parsed != current->head.size() && !parser.upgrade) || current->method.empty())
		{
			throw std::invalid_argument("the head has no request line, or ends before its empty line");
		}
		return true;
	}

	bool RequestReader::readBody(const Intake& intake, std::uint64_t most)
	{
		taking = intake;
		if (current->isChunked)
		{
			if (unread.empty())
			{
				return false; // the parser would take it for the end of the connection
			}
			const std::size_t parsed = http_parser_execute(&parser, &settings, unread.data(), unread.size());
			if (parser.http_errno != HPE_OK && parser.http_errno != HPE_PAUSED)
			{
				throw std::invalid_argument(http_errno_description(static_cast<http_errno>(parser.http_errno)));
			}
			unread.erase(0, parsed);
		}
		else
		{
			const std::uint64_t room = std::min(missing(), most - std::min(most, current->bodyBytes));
			const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(unread.size(), room));
			takeBody(std::string_view(unread).substr(0, size));
			unread.erase(0, size);
			isMessageOver = missing() == 0;
		}
		return isMessageOver;
	}

	void RequestReader::takeBody(std::string_view bytes)
	{
		const std::uint64_t room = taking.keeps - std::min<std::uint64_t>(taking.keeps, current->body.size());
		current->body += bytes.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(room, bytes.size())));
		current->bodyBytes += bytes.size();
		if (!taking.throwsAway && !bytes.empty())
		{
			digest = digest ? std::move(digest) : std::make_unique<Md5>();
			digest->add(bytes);
		}
	}

	void RequestReader::endBody()
	{
		current->bodyMd5 = digest ? digest->hex() : "";
		digest.reset();
	}

	/** The parser is content with lines that end otherwise, and so may find the head's end too early, and another request in it. */
	int RequestReader::takeTarget(http_parser* parser, const char* bytes, std::size_t size)
	{
		Request& request = *static_cast<RequestReader*>(parser->data)->current;
		request.target.append(bytes, size);
		return request.method.empty() ? 0 : 1;
	}

	int RequestReader::takeName(http_parser* parser, const char* bytes, std::size_t size)
	{
		RequestReader& self = *static_cast<RequestReader*>(parser->data);
		if (!std::exchange(self.isNameOpen, true))
		{
			self.current->headers.emplace_back();
		}
		self.current->headers.back().name.append(bytes, size);
		return 0;
	}

	int RequestReader::takeValue(http_parser* parser, const char* bytes, std::size_t size)
	{
		RequestReader& self = *static_cast<RequestReader*>(parser->data);
		self.isNameOpen = false;
		self.current->headers.back().value.append(bytes, size);
		return 0;
	}

	int RequestReader::endHead(http_parser* parser)
	{
		Request& request = *static_cast<RequestReader*>(parser->data)->current;
		request.method = http_method_str(static_cast<http_method>(parser->method));
		request.minorVersion = parser->http_minor;
		request.keepsConnection = http_should_keep_alive(parser) != 0;
		request.isChunked = (parser->flags & F_CHUNKED) != 0;
		if (parser->flags & F_CONTENTLENGTH)
		{
			request.announced = parser->content_length;
		}
		return 0;
	}

	int RequestReader::takeChunkedBody(http_parser* parser, const char* bytes, std::size_t size)
	{
		RequestReader& self = *static_cast<RequestReader*>(parser->data);
		self.takeBody({bytes, size});
		return self.isInHead ? 1 : 0;
	}

	/** Paused, so that the next request stays where it is. */
	int RequestReader::endMessage(http_parser* parser)
	{
		RequestReader& self = *static_cast<RequestReader*>(parser->data);
		self.isMessageOver = true;
		if (self.current->isChunked)
		{
			http_parser_pause(parser, 1);
		}
		return 0;
	}
} // namespace Lab
