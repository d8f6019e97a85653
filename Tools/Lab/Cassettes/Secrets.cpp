#include "Lab/Cassettes/Cassette.h"

#include <algorithm>
#include <cctype>

namespace Lab
{
	namespace
	{
		constexpr std::string_view removed = "(removed)";

		/** A part of the bytes of several pieces. */
		struct Span
		{
			std::size_t begin = 0;
			std::size_t end = 0;
		};

		bool isSecretName(std::string_view name)
		{
			std::string lower(name);
			std::transform(
				lower.begin(), lower.end(), lower.begin(), [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
			const auto speaksOf = [&lower](std::string_view word) { return lower.find(word) != lower.npos; };
			constexpr std::string_view words[] = {
				"authorization", "cookie", "token", "key", "secret", "signature", "session", "password", "credential"};
			return std::any_of(std::begin(words), std::end(words), speaksOf);
		}

		/** Values of a query. @param offset  of the line in what the spans are of. */
		void findInRequestLine(std::string_view line, std::size_t offset, std::vector<Span>& found)
		{
			const std::size_t end = std::min(line.rfind(" HTTP/"), line.size());
			std::size_t place = line.find('?');
			while (place < end)
			{
				const std::size_t name = place + 1;
				place = std::min(line.find('&', name), end);
				const std::size_t equals = line.find('=', name);
				if (equals < place && isSecretName(line.substr(name, equals - name)))
				{
					found.push_back({offset + equals + 1, offset + place});
				}
			}
		}

		void findInHeader(std::string_view line, std::size_t offset, std::vector<Span>& found)
		{
			const std::size_t colon = line.find(':');
			if (colon != line.npos && isSecretName(line.substr(0, colon)))
			{
				found.push_back({offset + std::min(line.find_first_not_of(' ', colon + 1), line.size()), offset + line.size()});
			}
		}

		std::vector<Span> findSecrets(std::string_view bytes)
		{
			std::vector<Span> found;
			bool isFirst = true;
			bool isInterim = false;
			for (std::size_t place = 0; place < bytes.size();)
			{
				const std::size_t end = std::min(bytes.find("\r\n", place), bytes.size());
				const std::string_view line = bytes.substr(place, end - place);
				if (line.empty() && !isInterim)
				{
					break; // the body
				}
				isInterim = isFirst ? line.starts_with("HTTP/1.1 1") : isInterim;
				isFirst ? findInRequestLine(line, place, found) : findInHeader(line, place, found);
				isFirst = line.empty(); // another head follows an interim one
				place = end + 2;
			}
			return found;
		}

		/** Pieces keep their borders, but for those inside what is replaced. */
		void replace(std::vector<RawPiece>& pieces, const Span& span)
		{
			std::size_t start = 0;
			bool isNamed = false;
			for (RawPiece& piece : pieces)
			{
				const std::size_t size = piece.bytes.size();
				const std::size_t from = std::clamp(span.begin, start, start + size) - start;
				const std::size_t to = std::clamp(span.end, start, start + size) - start;
				if (from < to)
				{
					piece.bytes.replace(from, to - from, std::exchange(isNamed, true) ? std::string_view() : removed);
				}
				start += size;
			}
		}

		void hide(std::vector<RawPiece>& pieces)
		{
			std::string bytes;
			for (const RawPiece& piece : pieces)
			{
				bytes += piece.bytes;
			}
			std::vector<Span> found = findSecrets(bytes);
			std::for_each(found.rbegin(), found.rend(), [&pieces](const Span& span) { replace(pieces, span); });
		}
	} // namespace

	void removeSecrets(RecordedExchange& exchange)
	{
		std::vector<RawPiece> request{{{}, std::move(exchange.request)}};
		hide(request);
		exchange.request = std::move(request.front().bytes);
		hide(exchange.answer.pieces);
	}
} // namespace Lab
