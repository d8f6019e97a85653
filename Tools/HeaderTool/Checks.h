#pragma once

#include "Diagnostics.h"
#include "Symbols.h"

namespace HeaderTool
{
	/**
	 * Finds what the engine would refuse, or this host could not offer; what the compiler refuses by itself is left to it.
	 * @param headers  all headers of the run, reference headers too: names are looked up in all of them.
	 * @return the first mistake of each header.
	 */
	Diagnostics check(const std::vector<HeaderDef>& headers);

	// The groups of checks; all of them throw HeaderError.

	/** #pragma once, the generated header and circles of includes. */
	void checkFile(const Symbols& symbols, const HeaderDef& header);

	/**
	 * @param name  of a type without its prefix, but for enumerations, which the engine knows by their whole name.
	 * @return whether the engine is known to have a reflected type of that name; case does not matter.
	 */
	bool isEngineName(std::string_view name);

	/** Unknown and repeated specifiers of one macro. @param macro  "UCLASS"; selects the specifiers that are known. */
	void checkSpecifiers(const Specifiers& specifiers, std::string_view macro);

	/** Functions and properties of a class or struct. */
	void checkMembers(const Symbols& symbols, const ClassDef& owner, bool isClass);

	/** Types, names and defaults of parameters, whatever they belong to. */
	void checkParameters(const Symbols& symbols, const std::vector<ParameterDef>& parameters, const std::string& owner);

	/** Where a type stands; not every type may stand everywhere. */
	enum class TypeUse
	{
		Parameter, // of a function or delegate; a return value too
		Property // a member that scripts do not see
	};

	/** @return why the type may not be used there; empty when it may. */
	std::string typeProblem(const Symbols& symbols, const TypeDef& type, TypeUse use);

	/** @return whether a parameter of that type may have the default. */
	bool suits(const DefaultDef& value, const TypeDef& type);
} // namespace HeaderTool
