#pragma once

#include "Diagnostics.h"
#include "Symbols.h"

#include <optional>

namespace HeaderTool
{
	/**
	 * Finds what the engine would refuse, or this host could not offer, in headers that could be read.
	 * @param headers      all headers of the run, reference headers too: names are looked up in all of them.
	 * @param diagnostics  receives one entry per mistake, in no particular order.
	 */
	void check(const std::vector<HeaderDef>& headers, Diagnostics& diagnostics);

	/** What one group of checks works with. */
	struct CheckContext
	{
		const std::vector<HeaderDef>& headers;
		const Symbols& symbols;
		const HeaderDef& header; // the one being checked
		Diagnostics& diagnostics;

		void report(int line, std::string message) const { diagnostics.push_back({header.path, line, std::move(message)}); }
	};

	/** Where a type stands; not every type may stand everywhere. */
	enum class TypeUse
	{
		Parameter, // of a function or delegate; a return value too
		Property // a member that scripts do not see
	};

	/** @return why the type may not be used there, or nothing when it may. */
	std::optional<std::string> typeProblem(const CheckContext& context, const TypeDef& type, TypeUse use);

	/** @return why the declared default does not suit the parameter's type, or nothing when it does. */
	std::optional<std::string> defaultProblem(const CheckContext& context, const ParameterDef& parameter);

	/**
	 * Unknown, repeated and contradicting specifiers of one macro.
	 * @param macro  "UCLASS"; selects the specifiers that are known.
	 * @param owner  the name of what the macro stands before, for messages.
	 */
	void checkSpecifiers(const CheckContext& context, const Specifiers& specifiers, std::string_view macro, const std::string& owner);

	void checkFile(const CheckContext& context);
	void checkFunctions(const CheckContext& context, const ClassDef& owner);
	/** @param owner  the name of the class or struct. */
	void checkProperties(const CheckContext& context, const std::vector<PropertyDef>& properties, const std::string& owner, bool isClass);
	/** Types, names and count of parameters, whatever they belong to. */
	void checkParameters(const CheckContext& context, const std::vector<ParameterDef>& parameters, const std::string& owner);
	/** Names that the engine has given away; it looks neither at prefixes nor at case. */
	void checkEngineNames(const CheckContext& context);
	/** Names that two headers, or two types, would both take in the generated code. */
	void checkClashes(const std::vector<HeaderDef>& headers, Diagnostics& diagnostics);
} // namespace HeaderTool
