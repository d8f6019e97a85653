#include "Model.h"

#include <algorithm>
#include <cctype>

namespace HeaderTool
{
	namespace
	{
		const Specifier* findIn(const std::vector<Specifier>& list, std::string_view key)
		{
			const auto found = std::find_if(list.begin(), list.end(), [key](const Specifier& entry) { return sameName(entry.key, key); });
			return found == list.end() ? nullptr : &*found;
		}
	} // namespace

	const Specifier* Specifiers::find(std::string_view key) const
	{
		return findIn(entries, key);
	}

	const Specifier* Specifiers::findMeta(std::string_view key) const
	{
		return findIn(meta, key);
	}

	std::string HeaderDef::baseName() const
	{
		return fileName.substr(0, fileName.rfind('.'));
	}

	std::string spell(const TypeDef& type)
	{
		std::string text = type.isConst ? "const " + type.name : type.name;
		for (size_t i = 0; i < type.arguments.size(); ++i)
		{
			text += (i == 0 ? "<" : ", ") + spell(type.arguments[i]);
		}
		if (!type.arguments.empty())
		{
			text += '>';
		}
		return text.append(static_cast<size_t>(type.pointers), '*').append(static_cast<size_t>(type.references), '&');
	}

	bool sameName(std::string_view a, std::string_view b)
	{
		return std::equal(
			a.begin(), a.end(), b.begin(), b.end(), [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
	}
} // namespace HeaderTool
