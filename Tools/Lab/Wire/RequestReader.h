#pragma once

#include "Lab/Plans/Plan.h"

#include <http_parser.h>

#include <memory>
#include <string>
#include <string_view>

namespace Lab
{
	class Md5;

	/** Takes the bytes of a connection apart into requests. Thread: one at a time. */
	class RequestReader
	{
	public:
		RequestReader();
		~RequestReader();

		void add(std::string_view bytes) { unread += bytes; }
		/**
		 * Reads a head, if it is there as a whole.
		 * @return whether request() has one. Throws std::invalid_argument for what is no request.
		 */
		bool readHead();
		/**
		 * Reads what is there of the body. @param intake  says what is kept. @param most  where to stop, in bytes of the body; one
		 * that comes in chunks goes on. @return whether it is complete.
		 */
		bool readBody(const Intake& intake, std::uint64_t most);
		/** Whether bytes are there that have not been read. */
		bool hasBytes() const { return !unread.empty(); }
		/** Bytes of the body that are still to come and may be taken past this reader. 0 = none, or nobody knows. */
		std::uint64_t missing() const { return request().isChunked ? 0 : request().announced.value_or(0) - request().bodyBytes; }
		/** Counts bytes of the body that nobody has seen. */
		void skip(std::uint64_t bytes) { current->bodyBytes += bytes; }
		/** Finishes the sums of a body that is not read on. */
		void endBody();

		Request& request() { return *current; }
		const Request& request() const { return *current; }
		/** The head that was read last; the next one is another object. */
		const std::shared_ptr<Request>& shared() const { return current; }

	private:
		static int takeTarget(http_parser* parser, const char* bytes, std::size_t size);
		static int takeName(http_parser* parser, const char* bytes, std::size_t size);
		static int takeValue(http_parser* parser, const char* bytes, std::size_t size);
		static int endHead(http_parser* parser);
		static int takeChunkedBody(http_parser* parser, const char* bytes, std::size_t size);
		static int endMessage(http_parser* parser);
		static const http_parser_settings settings;

		void takeBody(std::string_view bytes);

		http_parser parser;
		std::string unread;
		std::shared_ptr<Request> current;
		std::unique_ptr<Md5> digest; // of the body; null = none yet
		Intake taking;
		bool isInHead = false; // it is being parsed
		bool isNameOpen = false;
		bool isMessageOver = false;
	};
} // namespace Lab
