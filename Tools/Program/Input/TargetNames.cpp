#include "TargetNames.h"

#include "GenericPlatform/GenericPlatformHttp.h"
#include "ValueTransfer.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace Program
{
	namespace
	{
		/** @return the path of an address without its host, its query and its fragment. */
		std::string_view pathOf(std::string_view address)
		{
			const size_t scheme = address.find("://");
			const std::string_view rest = address.substr(scheme == address.npos ? 0 : scheme + 3);
			const std::string_view place = rest.substr(0, rest.find_first_of("?#"));
			return place.substr(std::min(place.find('/'), place.size()));
		}

		std::string decoded(std::string_view text)
		{
			std::string bytes;
			for (size_t place = 0; place < text.size(); ++place)
			{
				unsigned char byte = 0;
				const char* const digits = text.data() + place + 1;
				const bool isCode =
					text[place] == '%' && place + 2 < text.size() && std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2;
				bytes += isCode ? static_cast<char>(byte) : text[place];
				place += isCode ? 2 : 0;
			}
			return bytes;
		}

		bool isUnfit(char letter)
		{
			const auto byte = static_cast<unsigned char>(letter);
			return letter == '/' || letter == '\\' || byte < 0x20 || byte == 0x7f;
		}
	} // namespace

	std::string fileNameOf(const std::string& address)
	{
		const std::string_view path = pathOf(address);
		std::string name = decoded(path.substr(std::min(path.rfind('/') + 1, path.size())));
		std::replace_if(name.begin(), name.end(), isUnfit, '_');
		return name.empty() || name == "." || name == ".." ? "index.html" : name;
	}

	bool isFolder(const std::string& address)
	{
		return pathOf(address).ends_with('/');
	}

	std::string addressFor(const std::string& address, const std::string& file)
	{
		if (!isFolder(address))
		{
			return address;
		}
		const std::string name = file.substr(file.rfind('/') + 1);
		std::string whole = address;
		return whole.insert(std::min(address.find_first_of("?#"), address.size()),
			Reflect::toUtf8(FGenericPlatformHttp::UrlEncode(Reflect::toFString(name))));
	}
} // namespace Program
