#include "Lab/Plans/Plan.h"

namespace Lab
{
	void Plan::setHeader(std::string_view name, std::string value)
	{
		std::erase_if(headers, [name](const Header& header) { return equalsIgnoringCase(header.name, name); });
		headers.push_back({std::string(name), std::move(value)});
	}

	void Plan::setText(std::string text, const std::string& type)
	{
		content = bytesContent(std::move(text));
		setHeader("Content-Type", type);
	}
} // namespace Lab
