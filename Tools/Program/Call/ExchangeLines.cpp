#include "ExchangeLines.h"

#include "Console.h"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>

namespace Program
{
	namespace
	{
		bool isSecret(const std::string& header)
		{
			std::string name = header;
			std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
			const auto holds = [&](const char* part) { return name.find(part) != std::string::npos; };
			return holds("auth") || holds("cookie") || holds("token") || holds("secret") || holds("password") || holds("key");
		}

		void tellHeader(const char* mark, const std::string& name, const std::string& value)
		{
			complain(fmt::format("{} {}: {}", mark, name, isSecret(name) ? "(hidden)" : value));
		}

		/** @return an address without the name and the password in it. */
		std::string withoutLogin(const std::string& address)
		{
			const size_t host = address.find("://") == std::string::npos ? 0 : address.find("://") + 3;
			const size_t end = std::min(address.find_first_of("/?#", host), address.size());
			const size_t login = address.rfind('@', end);
			const bool hasLogin = login != std::string::npos && login >= host && login < end;
			return hasLogin ? address.substr(0, host) + "(hidden)" + address.substr(login) : address;
		}

		/** Tokens travel in queries, too. */
		std::string withoutSecrets(std::string address)
		{
			for (size_t begin = address.find('?'); begin != std::string::npos; begin = address.find('&', begin + 1))
			{
				const size_t equals = address.find('=', begin);
				const size_t end = std::min(address.find_first_of("&#", begin + 1), address.size());
				if (equals < end && isSecret(address.substr(begin, equals - begin)))
				{
					address.replace(equals + 1, end - equals - 1, "(hidden)");
				}
			}
			return address;
		}

		/** @return null when there is no such pin. */
		Json pin(const Reflect::CallFrame& frame, const char* name)
		{
			const std::optional<size_t> index = frame.findInput(name);
			if (!index)
			{
				return nullptr;
			}
			JsonSink sink;
			Reflect::writeValue(frame[*index].type(), frame[*index].get(), sink);
			return sink.take();
		}

		/** Only individual requests have a pin for it; the others are named after their verb. */
		std::string verbOf(const Reflect::Function& function, const Reflect::CallFrame& frame)
		{
			const Json verb = pin(frame, "verb");
			const std::string& name = function.name;
			const auto named = [&](const char* part) { return name.find(part) != std::string::npos; };
			return verb.is_string() ? verb.get<std::string>() : named("PUT") ? "PUT" : named("POST") ? "POST" : "GET";
		}
	} // namespace

	void tellRequest(const Reflect::Function& function, const Reflect::CallFrame& frame)
	{
		const Json url = pin(frame, "url");
		if (url.is_string())
		{
			complain(fmt::format("> {} {}", verbOf(function, frame), withoutSecrets(withoutLogin(url.get<std::string>()))));
		}
		const Json header = pin(frame, "header");
		for (const auto& [name, value] : header.items())
		{
			tellHeader(">", name, value.get<std::string>());
		}
	}

	void tellAnswer(const Json& pins)
	{
		if (pins.contains("statusCode"))
		{
			complain(fmt::format("< {}", pins["statusCode"].dump()));
		}
		for (const Json& line : pins.value("header", Json::array()))
		{
			const std::string text = line.get<std::string>();
			const size_t colon = std::min(text.find(':'), text.size());
			const size_t value = std::min(text.find_first_not_of(": ", colon), text.size());
			tellHeader("<", text.substr(0, colon), text.substr(value));
		}
	}
} // namespace Program
