#include "Html.h"
#include "ReferencePages.h"
#include "ValueTable.h"

#include <fmt/format.h>

namespace Program
{
	std::string valuesPage(const Reference& reference)
	{
		std::string body = "<h1>Enumerations</h1>\n";
		for (const UEnum* values : reference.enumerations())
		{
			body += valueTable(*values);
		}
		return htmlPage("Enumerations", body);
	}
} // namespace Program
