#pragma once

#include "Model.h"

#include <set>

namespace HeaderTool
{
	/** A declaration together with the header that holds it; false when nothing was found. */
	template <class Def>
	struct Found
	{
		const Def* def = nullptr;
		const HeaderDef* header = nullptr;
		explicit operator bool() const { return def != nullptr; }
	};

	/** Looks up reflected types by their C++ names in all headers of a run. Reading is safe from any thread. */
	class Symbols
	{
	public:
		/** @param inHeaders  outlive this object. */
		explicit Symbols(const std::vector<HeaderDef>& inHeaders)
			: headers(inHeaders)
		{
		}

		Found<ClassDef> findClass(std::string_view name) const { return find(&HeaderDef::classes, name); }
		Found<StructDef> findStruct(std::string_view name) const { return find(&HeaderDef::structs, name); }
		Found<EnumDef> findEnum(std::string_view name) const { return find(&HeaderDef::enums, name); }
		Found<DelegateDef> findDelegate(std::string_view name) const { return find(&HeaderDef::delegates, name); }

		/** @return the class and its reflected bases below UObject, the class itself first. */
		std::vector<const ClassDef*> withBases(const ClassDef& first) const;

		/** @return the headers that `from` includes, directly or not. */
		std::set<const HeaderDef*> includedBy(const HeaderDef& from) const;

		/** @return whether the compiler has seen the declaration when it comes to that line. */
		template <class Def>
		bool isVisible(const Found<Def>& found, const HeaderDef& from, int line) const
		{
			return found.header == &from ? found.def->line < line : includedBy(from).contains(found.header);
		}

		/** @return whether every header could be read as a whole, so that an unknown name is a mistake. */
		bool areComplete() const;

	private:
		template <class Def>
		Found<Def> find(std::vector<Def> HeaderDef::*list, std::string_view name) const
		{
			for (const HeaderDef& header : headers)
			{
				for (const Def& def : header.*list)
				{
					if (def.name == name)
					{
						return {&def, &header};
					}
				}
			}
			return {};
		}

		const std::vector<HeaderDef>& headers;
	};
} // namespace HeaderTool
