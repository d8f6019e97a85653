#include "HtmlCheck.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace
{
	class Reader
	{
	public:
		explicit Reader(std::string_view page)
			: rest(page)
		{
		}

		CheckedPage read()
		{
			takeExpected("<!DOCTYPE html>");
			while (!rest.empty() && result.faults.empty()) // behind the first fault nothing can be trusted
			{
				rest.front() == '<' ? readTag() : readText(take(rest.find('<')));
			}
			if (!open.empty())
			{
				fault("nothing closes <" + open.back() + ">");
			}
			return result;
		}

	private:
		void fault(const std::string& text) { result.faults.push_back(text + " before: " + std::string(rest.substr(0, 60))); }

		std::string take(size_t count)
		{
			const std::string taken(rest.substr(0, count));
			rest.remove_prefix(taken.size());
			return taken;
		}

		bool accept(std::string_view text)
		{
			const bool isThere = rest.starts_with(text);
			take(isThere ? text.size() : 0);
			return isThere;
		}

		void takeExpected(std::string_view text)
		{
			if (!accept(text))
			{
				fault("no " + std::string(text));
			}
		}

		void readText(std::string_view text)
		{
			static constexpr std::array<std::string_view, 5> entities = {"&amp;", "&lt;", "&gt;", "&quot;", "&#39;"};
			for (size_t place = text.find('&'); place != std::string_view::npos; place = text.find('&', place + 1))
			{
				const auto isHere = [&](std::string_view entity) { return text.substr(place).starts_with(entity); };
				if (std::none_of(entities.begin(), entities.end(), isHere))
				{
					fault("a loose '&' in: " + std::string(text));
				}
			}
		}

		void readTag()
		{
			if (accept("</"))
			{
				const std::string name = take(rest.find('>'));
				if (open.empty() || open.back() != name)
				{
					return fault("unexpected </" + name + ">");
				}
				open.pop_back();
				return takeExpected(">");
			}
			take(1);
			const std::string name = take(rest.find_first_of(" />"));
			std::set<std::string> attributes;
			while (result.faults.empty() && accept(" ") && !rest.starts_with("/"))
			{
				readAttribute(attributes);
			}
			if (!accept("/"))
			{
				open.push_back(name);
			}
			takeExpected(">");
		}

		void readAttribute(std::set<std::string>& attributes)
		{
			const std::string name = take(rest.find_first_of("=> "));
			takeExpected("=\"");
			const std::string value = take(rest.find('"'));
			takeExpected("\"");
			readText(value);
			if (!attributes.insert(name).second || value.find('<') != std::string::npos)
			{
				fault("the attribute " + name);
			}
			if (name == "id" && !result.ids.insert(value).second)
			{
				fault("the id " + value + " a second time");
			}
			if (name == "href" || name == "src")
			{
				result.links.push_back(value);
			}
		}

		std::string_view rest;
		std::vector<std::string> open;
		CheckedPage result;
	};
} // namespace

CheckedPage checkHtml(const std::string& page)
{
	return Reader(page).read();
}
