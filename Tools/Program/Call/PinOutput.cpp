#include "PinOutput.h"

#include "Console.h"

#include <fmt/core.h>
#include <openssl/evp.h>

namespace Program
{
	namespace
	{
		std::string base64(const std::vector<std::uint8_t>& bytes)
		{
			std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0'); // OpenSSL writes a terminator
			const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), bytes.data(), static_cast<int>(bytes.size()));
			text.resize(static_cast<size_t>(length));
			return text;
		}

		std::string asText(const Json& value)
		{
			if (value.is_binary())
			{
				return fmt::format("<{} bytes>", value.get_binary().size());
			}
			return value.is_string() ? value.get<std::string>() : value.dump(-1, ' ', false, Json::error_handler_t::replace);
		}

		/** A text that would push everything else off the screen loses its end there. */
		std::string shortened(std::string text)
		{
			constexpr size_t mostBytes = 2000;
			const size_t whole = text.size();
			if (whole <= mostBytes)
			{
				return text;
			}
			size_t end = mostBytes;
			while ((static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) // inside a character
			{
				--end;
			}
			return text.substr(0, end) + fmt::format("... ({} of {} bytes)", end, whole);
		}

		void printPin(const std::string& name, const std::string& text)
		{
			fmt::print("{}: {}\n", name, isTerminal(stdout) ? withoutControls(shortened(text)) : text);
		}
		/** The fields of a struct, or the values of a map, by names that say where they stand. */
		Json named(const std::string& owner, const Json& fields)
		{
			Json pins = Json::object();
			for (const auto& [name, value] : fields.items())
			{
				pins[fmt::format("{}.{}", owner, name)] = value;
			}
			return pins;
		}
	} // namespace

	std::string asJsonText(const Json& value)
	{
		return value.dump(-1, ' ', false, Json::error_handler_t::replace);
	}

	void printPins(const Json& pins, bool asJson)
	{
		Json printable = Json::object();
		for (const auto& [name, value] : pins.items())
		{
			if (asJson)
			{
				printable[name] = value.is_binary() ? Json(base64(value.get_binary())) : value;
			}
			else if (value.is_object())
			{
				printPins(named(name, value), false);
			}
			else
			{
				printPin(name, asText(value));
			}
		}
		if (asJson)
		{
			fmt::print("{}\n", fitFor(stdout, asJsonText(printable)));
		}
	}

	bool isFailure(const Json& pins)
	{
		const int status = pins.value("statusCode", 200);
		return status == 0 || status >= 400 || !pins.value("success", true);
	}
} // namespace Program
