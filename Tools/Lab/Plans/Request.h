#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Lab
{
	struct Header
	{
		std::string name;
		std::string value;
	};

	bool equalsIgnoringCase(std::string_view a, std::string_view b);
	/** @return the value of the first header of that name, in any case; null = none. */
	const std::string* findHeader(const std::vector<Header>& headers, std::string_view name);

	/** A request as it came. Behaviours see it twice: with its head alone, and again with its body. */
	struct Request
	{
		std::uint64_t connection = 0; // connections of an origin count from 1
		std::uint64_t number = 0; // so do its requests
		int visit = 0; // and those of one method and target
		std::string head; // its bytes, up to and including the empty line
		std::string method;
		std::string target;
		int minorVersion = 1; // of HTTP/1
		bool keepsConnection = true;
		std::optional<std::uint64_t> announced; // bytes, by its Content-Length
		bool isChunked = false;
		std::vector<Header> headers;
		std::string body; // without chunks; only what the intake keeps
		std::uint64_t bodyBytes = 0; // all that came
		std::string bodyMd5; // hexadecimal; empty when there was none, or it was thrown away unseen

		std::string_view path() const { return std::string_view(target).substr(0, target.find('?')); }
		/** What follows the question mark; empty = nothing. */
		std::string_view query() const;
		/** @return the value of a header, in any case; empty when absent. */
		std::string_view header(std::string_view name) const;
		/** @return a value of the query, decoded; empty when absent. */
		std::string parameter(std::string_view name) const;
	};

	/** The pairs of a query or of a posted form, decoded, in order. */
	std::vector<Header> parsePairs(std::string_view text);
} // namespace Lab
