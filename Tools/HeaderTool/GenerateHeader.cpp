#include "Generator.h"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>

namespace HeaderTool
{
	namespace
	{
		/** The generated header comes after all other includes, yet must not need any of the reflection tables itself. */
		constexpr std::string_view declarations = R"(
class UClass;
struct UDelegateFunction;
struct UEnum;
struct UScriptStruct;

template <class E>
const UEnum* StaticEnum();
template <class T>
struct FReflectionOf;
)";

		std::string declareTypes(const HeaderDef& header)
		{
			std::string text;
			for (const ClassDef& def : header.classes)
			{
				text += fmt::format("\nclass {};\n", def.name);
			}
			for (const ClassDef& def : header.structs)
			{
				text += fmt::format("\nstruct {};\n", def.name);
			}
			for (const EnumDef& def : header.enums)
			{
				text += fmt::format("\nenum class {0} : uint8;\ntemplate <>\nconst UEnum* StaticEnum<{0}>();\n", def.name);
			}
			if (!header.delegates.empty())
			{
				text += "\nnamespace GeneratedSignatures\n{\n";
				for (const DelegateDef& def : header.delegates)
				{
					text += fmt::format("\textern const UDelegateFunction {};\n", def.name);
				}
				text += "} // namespace GeneratedSignatures\n";
			}
			return text;
		}

		std::string classBody(const ClassDef& def)
		{
			return fmt::format("public: \\\n"
							   "\tusing Super = {0}; \\\n"
							   "\tusing ThisClass = {1}; \\\n"
							   "\tstatic UClass* StaticClass(); \\\n"
							   "\\\n"
							   "private: \\\n"
							   "\tfriend struct FReflectionOf<{1}>;\n",
				def.super, def.name);
		}

		std::string structBody(const ClassDef& def)
		{
			return fmt::format("\tstatic const UScriptStruct* StaticStruct(); \\\n"
							   "\tfriend struct FReflectionOf<{}>;\n",
				def.name);
		}
	} // namespace

	std::string generatedName(const HeaderDef& header, const std::string& module)
	{
		std::string base = header.baseName();
		std::replace_if(
			base.begin(), base.end(), [](unsigned char c) { return !std::isalnum(c); }, '_');
		return module + "_" + base;
	}

	std::string generateHeader(const HeaderDef& header, const std::string& module)
	{
		// As in the engine, a header that includes its generated header has the reflection macros and needs no other include for them.
		std::string text =
			fmt::format("// Generated from {}. Do not edit.\n#pragma once\n#include \"UObject/ObjectMacros.h\"\n", header.fileName);
		if (!header.isReflected())
		{
			return text;
		}
		text += declarations;
		text += declareTypes(header);
		const std::string fileId = fmt::format("FID_{}_h", generatedName(header, module));
		text += fmt::format("\n#undef CURRENT_FILE_ID\n#define CURRENT_FILE_ID {}\n", fileId);
		for (const ClassDef& def : header.structs)
		{
			text += fmt::format("\n#define {}_{}_GENERATED_BODY \\\n{}", fileId, def.bodyLine, structBody(def));
		}
		for (const ClassDef& def : header.classes)
		{
			text += fmt::format("\n#define {}_{}_GENERATED_BODY \\\n{}", fileId, def.bodyLine, classBody(def));
		}
		return text;
	}
} // namespace HeaderTool
