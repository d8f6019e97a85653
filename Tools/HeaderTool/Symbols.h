#pragma once

#include "Model.h"

namespace HeaderTool
{
	/** Looks up reflected types by their C++ names in all headers of a run. */
	class Symbols
	{
	public:
		/** @param inHeaders  outlive this object. */
		explicit Symbols(const std::vector<HeaderDef>& inHeaders)
			: headers(inHeaders)
		{
		}

		const ClassDef* findClass(std::string_view name) const { return find(&HeaderDef::classes, name); }
		const ClassDef* findStruct(std::string_view name) const { return find(&HeaderDef::structs, name); }
		const EnumDef* findEnum(std::string_view name) const { return find(&HeaderDef::enums, name); }
		const DelegateDef* findDelegate(std::string_view name) const { return find(&HeaderDef::delegates, name); }
		bool isClass(std::string_view name) const { return name == "UObject" || findClass(name) != nullptr; }

		const std::vector<HeaderDef>& headers;

	private:
		template <class Def>
		const Def* find(std::vector<Def> HeaderDef::*list, std::string_view name) const
		{
			for (const HeaderDef& header : headers)
			{
				for (const Def& def : header.*list)
				{
					if (def.name == name)
					{
						return &def;
					}
				}
			}
			return nullptr;
		}
	};
} // namespace HeaderTool
