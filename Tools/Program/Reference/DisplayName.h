#pragma once

#include <string>
#include <string_view>

namespace Program
{
	/**
	 * A name as the editor shows it on a node: "CreateHttpRequestGET" becomes "Create Http Request GET".
	 * @param isBool  such names lose their prefix: "bNewValue" becomes "New Value".
	 */
	std::string displayName(std::string_view name, bool isBool = false);
} // namespace Program
