#pragma once

#include "CoreTypes.h"
#include "Outgoing.h"

#include <optional>
#include <string_view>

namespace Redirects
{
	constexpr int32 mostHops = 20;

	/** Whether an answer with this code and Location header (empty when absent) sends the request elsewhere. */
	bool IsRedirect(int32 Code, std::string_view Location);

	/**
	 * @return the hop that follows Hop, or nothing when the location must not be asked. Verb and headers change as the
	 * code demands; what proves the sender's identity goes to no other origin.
	 */
	std::optional<FOutgoing> NextHop(const FOutgoing& Hop, int32 Code, std::string_view Location);
} // namespace Redirects
