#pragma once

#include <memory>
#include <string>
#include <string_view>

struct bio_st;
struct ssl_ctx_st;

namespace Lab
{
	/** Where a URL leads. */
	struct ServerPlace
	{
		bool usesTls = false;
		std::string host;
		std::string port;
		std::string authority; // as the URL has it
		std::string path; // before all targets; without a slash at its end
	};

	/** Throws std::invalid_argument for what is no URL of http or https. */
	ServerPlace parseServer(const std::string& url);

	/** A connection to a server. Calls wait. Thread: one at a time. */
	class Upstream
	{
	public:
		/** Connects. Throws std::runtime_error when the server cannot be reached or is not trusted. */
		explicit Upstream(const ServerPlace& place);

		int number() const;
		/** Whether bytes are there that the system does not know of any more. */
		bool hasBytes() const;
		/** @return bytes; 0 = the end, less = an error. */
		int read(char* room, int most);
		/** @return whether all went out. */
		bool write(std::string_view bytes);

	private:
		std::shared_ptr<ssl_ctx_st> context; // null = plain
		std::shared_ptr<bio_st> stream;
	};
} // namespace Lab
