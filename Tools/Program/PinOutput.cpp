#include "PinOutput.h"

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

		std::string asLine(const Json& value)
		{
			if (value.is_binary())
			{
				return fmt::format("<{} bytes>", value.get_binary().size());
			}
			return value.is_string() ? value.get<std::string>() : value.dump();
		}
	} // namespace

	void printPins(const Json& pins, bool asJson)
	{
		Json printable = Json::object();
		for (const auto& [name, value] : pins.items())
		{
			if (asJson)
			{
				printable[name] = value.is_binary() ? Json(base64(value.get_binary())) : value;
			}
			else
			{
				fmt::print("{}: {}\n", name, asLine(value));
			}
		}
		if (asJson)
		{
			fmt::print("{}\n", printable.dump());
		}
	}

	bool isFailure(const Json& pins)
	{
		const int status = pins.value("statusCode", 200);
		return status == 0 || status >= 400 || !pins.value("success", true);
	}
} // namespace Program
