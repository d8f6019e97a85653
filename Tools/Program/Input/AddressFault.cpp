#include "AddressFault.h"

#include "Reflection.h"

#include <cstring>
#include <fmt/format.h>

namespace Program
{
	std::string addressFault(const std::string& address)
	{
		const size_t end = address.find("://");
		const std::string scheme = address.substr(0, end);
		if (end == std::string::npos || scheme.find_first_of("/?#@.") != std::string::npos)
		{
			return fmt::format("'{0}' is no address: the scheme is missing, did you mean 'http://{0}'?", address);
		}
		if (!Reflect::equalNames(scheme, "http") && !Reflect::equalNames(scheme, "https"))
		{
			return fmt::format("'{}' cannot be asked for: its scheme is neither http nor https", address);
		}
		const std::string rest = address.substr(end + 3);
		return rest.empty() || std::strchr("/?#:", rest[0]) ? fmt::format("'{}' is no address: it names no host", address) : "";
	}
} // namespace Program
