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

	namespace
	{
		/** The parser ends a head there, and takes what follows for a body or the next request. */
		bool hasBareLineFeed(std::string_view head)
		{
			std::size_t place = head.find('\n');
			while (place != head.npos && place > 0 && head[place - 1] == '\r')
			{
				place = head.find('\n', place + 1);
			}
			return place != head.npos;
		}
	} // namespace

	RequestReader::RequestReader()
		: parser()
		, current(std::make_shared<Request>())
	{
	}

	RequestReader::~RequestReader() = default;

	bool RequestReader::readHead()
	{
		constexpr std::string_view lineEnd = "\r\n";
		constexpr std::string_view emptyLine = "\r\n\r\n";
		while (unread.starts_with(lineEnd))
		{
			unread.erase(0, lineEnd.size()); // some clients send one behind a body
		}
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
		if (hasBareLineFeed(current->head))
		{
			throw std::invalid_argument("a line of the head ends without a carriage return");
		}
		http_parser_init(&parser, HTTP_REQUEST);
		parser.data = this;
		const std::size_t parsed = http_parser_execute(&parser, &settings, current->head.data(), current->head.size());
		const auto error = static_cast<http_errno>(parser.http_errno);
		if (error != HPE_OK || (parsed != current->head.size() && !parser.upgrade))
		{
			throw std::invalid_argument(http_errno_description(error));
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

	int RequestReader::takeTarget(http_parser* parser, const char* bytes, std::size_t size)
	{
		static_cast<RequestReader*>(parser->data)->current->target.append(bytes, size);
		return 0;
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
		static_cast<RequestReader*>(parser->data)->takeBody({bytes, size});
		return 0;
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
