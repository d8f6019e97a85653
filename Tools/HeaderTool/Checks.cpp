#include "Checks.h"

#include <algorithm>
#include <cctype>
#include <map>

namespace HeaderTool
{
	namespace
	{
		using Owners = std::map<std::string, std::string>;

		/** Remembers who took a name first; the engine does not look at the case of letters. */
		void take(Owners& owners, std::string name, const HeaderDef& header, int line, std::string_view what)
		{
			std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
			const auto [taken, isNew] = owners.try_emplace(name, fmt::format("{}({})", header.path, line));
			if (!isNew)
			{
				fail(line, "'{}' takes a name that {} has taken", what, taken->second);
			}
		}

		/** Checks one header after the other; what they have in common are the names. */
		class Checker
		{
		public:
			explicit Checker(const Symbols& inSymbols)
				: symbols(inSymbols)
			{
			}

			void checkHeader(const HeaderDef& header)
			{
				take(files, header.baseName(), header, 1, header.fileName);
				checkFile(symbols, header);
				checkNames(header, header.classes, "U");
				checkNames(header, header.structs, "F");
				checkNames(header, header.enums, "");
				checkNames(header, header.delegates, "F");
				const auto checkAll = [&](const auto& defs, auto checkOne)
				{ std::for_each(defs.begin(), defs.end(), [&](const auto& def) { (this->*checkOne)(def); }); };
				checkAll(header.enums, &Checker::checkEnum);
				checkAll(header.structs, &Checker::checkStruct);
				checkAll(header.delegates, &Checker::checkDelegate);
				checkAll(header.classes, &Checker::checkClass);
			}

		private:
			/** The engine's prefixes tell it what a name stands for; it knows the type by the rest of the name. */
			template <class Def>
			void checkNames(const HeaderDef& header, const std::vector<Def>& defs, std::string_view prefix)
			{
				for (const Def& def : defs)
				{
					const std::string name = def.name.substr(prefix.size());
					if (!def.name.starts_with(prefix) || name.empty())
					{
						fail(def.line, "the name '{}' must begin with {}", def.name, prefix);
					}
					if (!header.isReference && isEngineName(name))
					{
						fail(def.line, "'{}': the engine has a type of its own called '{}'", def.name, name);
					}
					take(std::is_same_v<Def, DelegateDef> ? delegates : types, name, header, def.line, def.name);
				}
			}

			void checkClass(const ClassDef& def) const
			{
				checkSpecifiers(def.specifiers, "UCLASS");
				if (!symbols.isClass(def.super))
				{
					fail(def.line, "'{}' must derive from a reflected class, '{}' is none", def.name, def.super);
				}
				for (const std::string& base : def.otherBases)
				{
					if (symbols.isClass(base))
					{
						fail(def.line, "'{}' may have one reflected base only, '{}' is a second one", def.name, base);
					}
				}
				checkMembers(symbols, def, true);
			}

			void checkStruct(const ClassDef& def) const
			{
				checkSpecifiers(def.specifiers, "USTRUCT");
				if (!def.super.empty() && !symbols.findStruct(def.super))
				{
					fail(def.line, "the base '{}' of '{}' is not a reflected struct", def.super, def.name);
				}
				checkMembers(symbols, def, false);
			}

			void checkEnum(const EnumDef& def) const
			{
				checkSpecifiers(def.specifiers, "UENUM");
				if (!def.isScoped || def.base != "uint8")
				{
					fail(def.line, "'{}' must be an 'enum class' based on uint8", def.name);
				}
				for (auto enumerator = def.enumerators.begin(); enumerator != def.enumerators.end(); ++enumerator)
				{
					checkSpecifiers(enumerator->specifiers, "UMETA");
					const auto isSame = [&](const EnumeratorDef& e)
					{ return sameName(e.name, enumerator->name) || e.value == enumerator->value; };
					if (const auto clash = std::find_if(def.enumerators.begin(), enumerator, isSame); clash != enumerator)
					{
						fail(enumerator->line, "'{}' has the name or the value of '{}'", enumerator->name, clash->name);
					}
				}
			}

			void checkDelegate(const DelegateDef& def) const
			{
				for (const ParameterDef& parameter : def.parameters)
				{
					if (parameter.type.isOutput())
					{
						fail(parameter.line, "parameter '{}' of '{}': delegates take no non-const references", parameter.name, def.name);
					}
				}
				checkParameters(symbols, def.parameters, def.name);
			}

			const Symbols& symbols;
			Owners files;
			Owners types; // as scripts see them, without their prefix
			Owners delegates;
		};
	} // namespace

	Diagnostics check(const std::vector<HeaderDef>& headers)
	{
		const Symbols symbols(headers);
		Checker checker(symbols);
		Diagnostics diagnostics;
		for (const HeaderDef& header : headers)
		{
			try
			{
				checker.checkHeader(header);
			}
			catch (const HeaderError& error)
			{
				diagnostics.push_back({header.path, error.line, error.what()});
			}
		}
		return diagnostics;
	}
} // namespace HeaderTool
