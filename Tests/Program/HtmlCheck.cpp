#include "HtmlCheck.h"

#include <regex>

CheckedPage checkHtml(const std::string& page)
{
	static const std::regex tag(R"(<(/?)([A-Za-z][\w-]*)((?: [\w:-]+="[^"<]*")*) ?(/?)>)");
	static const std::regex attribute(R"re( ([\w:-]+)="([^"]*)")re");
	static const std::regex looseAmpersand("&(?!(amp|lt|gt|quot|#39);)");
	const std::string begin = "<!DOCTYPE html>";
	CheckedPage result;
	std::vector<std::string> open;
	const auto fault = [&](size_t at, const char* what) { result.faults.push_back(what + (": " + page.substr(at, 60))); };
	if (!page.starts_with(begin) || std::regex_search(page, looseAmpersand))
	{
		fault(0, "no doctype, or a loose '&'");
	}
	// Behind the first fault nothing can be trusted.
	for (size_t at = begin.size(); result.faults.empty() && (at = page.find('<', at)) != std::string::npos; ++at)
	{
		std::smatch parts;
		if (!std::regex_search(page.begin() + static_cast<long>(at), page.end(), parts, tag, std::regex_constants::match_continuous))
		{
			fault(at, "no tag");
			break;
		}
		if (parts[1].length() > 0 && (open.empty() || open.back() != parts[2]))
		{
			fault(at, "unexpected end of an element");
		}
		else if (parts[1].length() > 0)
		{
			open.pop_back();
		}
		else if (parts[4].length() == 0)
		{
			open.push_back(parts[2]);
		}
		const std::string attributes = parts[3];
		std::set<std::string> names;
		for (std::sregex_iterator found(attributes.begin(), attributes.end(), attribute), end; found != end; ++found)
		{
			const std::string name = (*found)[1];
			const std::string value = (*found)[2];
			if (!names.insert(name).second || (name == "id" && !result.ids.insert(value).second))
			{
				fault(at, "an attribute or id a second time");
			}
			if (name == "href" || name == "src")
			{
				result.links.push_back(value);
			}
		}
	}
	if (result.faults.empty() && !open.empty())
	{
		fault(page.size(), ("nothing closes " + open.back()).c_str());
	}
	return result;
}
