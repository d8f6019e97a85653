#include "Checks.h"
#include "EngineNames.h"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>
#include <map>

namespace HeaderTool
{
	namespace
	{
		/** Calls visit(name, line) for every reflected type of a header. */
		template <class Visit>
		void forEachType(const HeaderDef& header, Visit visit)
		{
			const auto visitAll = [&](const auto& list)
			{ std::for_each(list.begin(), list.end(), [&](const auto& def) { visit(def.name, def.line); }); };
			visitAll(header.classes);
			visitAll(header.structs);
			visitAll(header.enums);
			visitAll(header.delegates);
		}

		void checkGeneratedInclude(const CheckContext& context, const IncludeDef& generated)
		{
			const HeaderDef& header = context.header;
			const std::string expected = header.baseName() + ".generated.h";
			if (generated.file != expected)
			{
				context.report(generated.line, fmt::format("expected #include \"{}\", found \"{}\"", expected, generated.file));
			}
			if (generated.isConditional)
			{
				context.report(generated.line, fmt::format("\"{}\" must not stand inside #if", generated.file));
			}
			for (const IncludeDef& include : header.includes)
			{
				if (include.line > generated.line)
				{
					context.report(include.line, fmt::format("\"{}\" must be the last include", expected));
				}
			}
			forEachType(header,
				[&](const std::string& name, int line)
				{
					if (line < generated.line)
					{
						context.report(line, fmt::format("'{}' is declared before #include \"{}\"", name, expected));
					}
				});
		}

		int firstTypeLine(const HeaderDef& header)
		{
			int first = INT32_MAX;
			forEachType(header, [&](const std::string&, int line) { first = std::min(first, line); });
			return first;
		}

		void checkCircle(const CheckContext& context)
		{
			for (const IncludeDef& include : context.header.includes)
			{
				for (const HeaderDef& other : context.headers)
				{
					const bool isIncluded = include.file == other.includeName || include.file == other.fileName;
					if (isIncluded && (&other == &context.header || context.symbols.includedBy(other).contains(&context.header)))
					{
						context.report(include.line, fmt::format("\"{}\" includes this header in turn", include.file));
					}
				}
			}
		}

		/** Remembers who took a name first and reports everyone who comes later. */
		class NameRegister
		{
		public:
			explicit NameRegister(Diagnostics& inDiagnostics)
				: diagnostics(inDiagnostics)
			{
			}

			/** @param what  begins the message: "'UFoo'" */
			void take(std::string name, const std::string& path, int line, const std::string& what)
			{
				std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
				const auto [taken, isNew] = names.try_emplace(name, fmt::format("{}({})", path, line));
				if (!isNew)
				{
					diagnostics.push_back({path, line, fmt::format("{} takes a name that {} has taken", what, taken->second)});
				}
			}

		private:
			Diagnostics& diagnostics;
			std::map<std::string, std::string> names;
		};
	} // namespace

	void checkFile(const CheckContext& context)
	{
		const HeaderDef& header = context.header;
		const auto generated = std::find_if(header.includes.begin(), header.includes.end(),
			[](const IncludeDef& include) { return include.file.ends_with(".generated.h"); });
		if (generated != header.includes.end())
		{
			checkGeneratedInclude(context, *generated);
		}
		else if (header.isReflected())
		{
			context.report(firstTypeLine(header), fmt::format("reflected types need #include \"{}.generated.h\"", header.baseName()));
		}
		if (!header.startsWithPragmaOnce && (header.isReflected() || generated != header.includes.end()))
		{
			context.report(1, "the header must begin with #pragma once");
		}
		checkCircle(context);
	}

	void checkEngineNames(const CheckContext& context)
	{
		const auto check = [&](const auto& list, size_t prefix)
		{
			for (const auto& def : list)
			{
				if (const std::string name = def.name.substr(prefix); isEngineName(name))
				{
					context.report(def.line, fmt::format("'{}': the engine has a type of its own called '{}'", def.name, name));
				}
			}
		};
		check(context.header.classes, 1);
		check(context.header.structs, 1);
		check(context.header.enums, 0);
		check(context.header.delegates, 1);
	}

	void checkClashes(const std::vector<HeaderDef>& headers, Diagnostics& diagnostics)
	{
		NameRegister files(diagnostics);
		NameRegister cppNames(diagnostics);
		NameRegister scriptNames(diagnostics);
		for (const HeaderDef& header : headers)
		{
			files.take(header.baseName(), header.path, 1, fmt::format("the header '{}'", header.fileName));
			forEachType(
				header, [&](const std::string& name, int line) { cppNames.take(name, header.path, line, fmt::format("'{}'", name)); });
			// Scripts see classes and structs without their prefix; delegates live in a room of their own.
			const auto takeScriptNames = [&](const auto& list, size_t prefix)
			{
				for (const auto& def : list)
				{
					scriptNames.take(def.name.substr(prefix), header.path, def.line,
						fmt::format("'{}', '{}' to scripts,", def.name, def.name.substr(prefix)));
				}
			};
			takeScriptNames(header.classes, 1);
			takeScriptNames(header.structs, 1);
			takeScriptNames(header.enums, 0);
		}
	}
} // namespace HeaderTool
