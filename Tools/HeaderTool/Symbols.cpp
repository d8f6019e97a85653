#include "Symbols.h"

#include <algorithm>

namespace HeaderTool
{
	std::vector<const ClassDef*> Symbols::withBases(const ClassDef& first) const
	{
		std::vector<const ClassDef*> chain;
		// A class that derives from itself is an error of its own; here it only has to end.
		for (const ClassDef* c = &first; c && std::find(chain.begin(), chain.end(), c) == chain.end(); c = findClass(c->super).def)
		{
			chain.push_back(c);
		}
		return chain;
	}

	std::set<const HeaderDef*> Symbols::includedBy(const HeaderDef& from) const
	{
		std::set<const HeaderDef*> reached;
		std::vector<const HeaderDef*> open = {&from};
		while (!open.empty())
		{
			const HeaderDef* const current = open.back();
			open.pop_back();
			for (const IncludeDef& include : current->includes)
			{
				const std::string_view file = std::string_view(include.file).substr(include.file.rfind('/') + 1);
				for (const HeaderDef& header : headers)
				{
					if (header.fileName == file && reached.insert(&header).second)
					{
						open.push_back(&header);
					}
				}
			}
		}
		return reached;
	}

	bool Symbols::areComplete() const
	{
		return std::all_of(headers.begin(), headers.end(), [](const HeaderDef& header) { return header.isComplete; });
	}
} // namespace HeaderTool
