#include "Checks.h"

#include <algorithm>
#include <set>

namespace HeaderTool
{
	namespace
	{
		void checkGeneratedInclude(const HeaderDef& header, const IncludeDef& generated)
		{
			const std::string expected = header.baseName() + ".generated.h";
			if (generated.file != expected)
			{
				fail(generated.line, "expected #include \"{}\", found \"{}\"", expected, generated.file);
			}
			if (const IncludeDef& last = header.includes.back(); last.line != generated.line)
			{
				fail(last.line, "\"{}\" must be the last include", expected);
			}
		}

		/** @return whether the include leads to the header, directly or not. @param seen  what was looked at before. */
		bool leadsTo(const Symbols& symbols, const IncludeDef& include, const HeaderDef& header, std::set<const HeaderDef*>& seen)
		{
			const auto goesOn = [&](const IncludeDef& next) { return leadsTo(symbols, next, header, seen); };
			const auto leads = [&](const HeaderDef& other)
			{
				const bool isIncluded = include.file == other.includeName || include.file == other.fileName;
				return isIncluded && (&other == &header ||
										 (seen.insert(&other).second && std::any_of(other.includes.begin(), other.includes.end(), goesOn)));
			};
			return std::any_of(symbols.headers.begin(), symbols.headers.end(), leads);
		}
	} // namespace

	void checkFile(const Symbols& symbols, const HeaderDef& header)
	{
		const auto generated = std::find_if(header.includes.begin(), header.includes.end(),
			[](const IncludeDef& include) { return include.file.ends_with(".generated.h"); });
		const bool hasGenerated = generated != header.includes.end();
		if (!header.startsWithPragmaOnce && (header.isReflected() || hasGenerated))
		{
			fail(1, "the header must begin with #pragma once");
		}
		if (hasGenerated)
		{
			checkGeneratedInclude(header, *generated);
		}
		else if (header.isReflected())
		{
			fail(1, "reflected types need #include \"{}.generated.h\"", header.baseName());
		}
		for (const IncludeDef& include : header.includes)
		{
			if (std::set<const HeaderDef*> seen; leadsTo(symbols, include, header, seen))
			{
				fail(include.line, "\"{}\" includes this header in turn", include.file);
			}
		}
	}
} // namespace HeaderTool
