#pragma once

#include <string_view>

namespace HeaderTool
{
	/**
	 * @param name  without its prefix, but for enumerations, which the engine knows by their whole name.
	 * @return whether the engine is known to have a reflected type of that name; case does not matter.
	 */
	bool isEngineName(std::string_view name);
} // namespace HeaderTool
