#include "ExchangeLines.h"

#include "Console.h"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>
#include <iterator>
#include <string>

namespace Program
{
	namespace
	{
		constexpr std::string_view hidden = "(hidden)";
		constexpr std::string_view afterAddress = " \t\"'<>";

		/** @param name  of a header or of a field in a query. */
		bool isSecret(std::string_view name)
		{
			constexpr std::string_view parts[] = {
				"auth", "cookie", "token", "secret", "passw", "pwd", "key", "signature", "credential", "session"};
			std::string lower(name);
			std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
			const bool isQuestion = lower.ends_with("-authenticate"); // what a server asks for
			return lower == "sig" || (!isQuestion && std::any_of(std::begin(parts), std::end(parts),
														 [&](std::string_view part) { return lower.find(part) != lower.npos; }));
		}

		/** Takes the name and the password out of the addresses in a text. */
		void hideLogins(std::string& text)
		{
			for (size_t host = text.find("://"); host != text.npos; host = text.find("://", host))
			{
				host += 3;
				const size_t end = std::min(text.find_first_of(std::string("/?#").append(afterAddress), host), text.size());
				const size_t login = text.substr(0, end).rfind('@');
				if (login != text.npos && login >= host)
				{
					text.replace(host, login - host, hidden);
				}
			}
		}

		/** Tokens travel in queries and fragments, too. */
		void hideFields(std::string& text)
		{
			constexpr std::string_view separators = "?#&;";
			for (size_t mark = text.find_first_of("?#"); mark != text.npos; mark = text.find_first_of(separators, mark + 1))
			{
				const size_t end = std::min(text.find_first_of(std::string(separators).append(afterAddress), mark + 1), text.size());
				const size_t equals = text.find('=', mark);
				if (equals < end && isSecret(std::string_view(text).substr(mark + 1, equals - mark - 1)))
				{
					text.replace(equals + 1, end - equals - 1, hidden);
				}
			}
		}

		/** @param line  a header, or the first line of a head. */
		std::string withoutSecrets(std::string_view line)
		{
			const size_t colon = line.find(':');
			const std::string_view name = line.substr(0, colon);
			const bool isHeader = colon != line.npos && name.find(' ') == name.npos;
			if (isHeader && isSecret(name))
			{
				return fmt::format("{}: {}", name, hidden);
			}
			std::string shown(line);
			hideLogins(shown);
			hideFields(shown);
			return shown;
		}
	} // namespace

	void tellHead(bool isSent, std::string_view head)
	{
		std::string told;
		while (!head.empty())
		{
			const size_t end = std::min(head.find('\n'), head.size());
			const std::string_view line = head.substr(0, end);
			told += fmt::format("{} {}\n", isSent ? '>' : '<', withoutSecrets(line.substr(0, line.find_last_not_of('\r') + 1)));
			head.remove_prefix(std::min(end + 1, head.size()));
		}
		complain(told.substr(0, told.size() - 1)); // at once, so that heads of several transfers do not mix
	}
} // namespace Program
