#include "Generator.h"
#include "Tables.h"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>

namespace HeaderTool
{
	namespace
	{
		/** "CORVANE_API" */
		std::string exportMacro(std::string module)
		{
			std::transform(
				module.begin(), module.end(), module.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
			return module + "_API";
		}

		/** `const FString dataString, int32 statusCode` or a part of each. */
		std::string join(const DelegateDef& def, bool withTypes, bool withNames)
		{
			std::string list;
			for (const ParameterDef& parameter : def.parameters)
			{
				list += (list.empty() ? "" : ", ") + (withTypes ? spell(parameter.type) : "") + (withTypes && withNames ? " " : "") +
						(withNames ? parameter.name : "");
			}
			return list;
		}

		/** The free function through which the engine broadcasts. */
		std::string wrapperHead(const DelegateDef& def)
		{
			return fmt::format("void {}_DelegateWrapper(const FMulticastScriptDelegate& {}{}{})", def.name, def.name.substr(1),
				def.parameters.empty() ? "" : ", ", join(def, true, true));
		}

		/** What stands in place of the DECLARE_... macro. */
		std::string delegateBody(const DelegateDef& def, const std::string& api)
		{
			return fmt::format("\n#define {0}_DECLARED \\\n"
							   "\t{1} {2}; \\\n"
							   "\tclass {0} : public TDynamicMulticastDelegate<{3}> \\\n\t{{ \\\n\tpublic: \\\n"
							   "\t\tvoid Broadcast({4}) const {{ {0}_DelegateWrapper({5}); }} \\\n\t}}\n",
				def.name, api, wrapperHead(def), join(def, true, false), join(def, true, true),
				"*this" + (def.parameters.empty() ? "" : ", " + join(def, false, true)));
		}

		std::string wrapper(const DelegateDef& def)
		{
			std::string members;
			std::string copies;
			for (const ParameterDef& parameter : def.parameters)
			{
				members += fmt::format("\t\t{} {};\n", storedType(parameter.type), parameter.name);
				copies += fmt::format("\tParms.{0} = {0};\n", parameter.name);
			}
			return fmt::format("\n{}\n{{\n\tstruct FParameters\n\t{{\n{}\t}};\n\tFParameters Parms;\n{}"
							   "\tProcessMulticastDelegate({}, &Parms);\n}}\n",
				wrapperHead(def), members, copies, def.name.substr(1));
		}

		std::string engineClassBody(const ClassDef& def)
		{
			std::string text = fmt::format("private: \\\n"
										   "\tstatic UClass* GetPrivateStaticClass(); \\\n"
										   "\tstatic void StaticRegisterNatives{0}(); \\\n"
										   "\tfriend struct Z_Construct_UClass_{0}_Statics; \\\n",
				def.name);
			for (const FunctionDef& function : def.functions)
			{
				text += fmt::format("\tstatic void exec{}(UObject* Context, FFrame& Stack, void* const Result); \\\n", function.name);
			}
			text += fmt::format("public: \\\n"
								"\tusing Super = {1}; \\\n"
								"\tusing ThisClass = {0}; \\\n"
								"\tusing WithinClass = UObject; \\\n"
								"\tstatic UClass* StaticClass() {{ return GetPrivateStaticClass(); }} \\\n"
								"\tstatic const TCHAR* StaticPackage(); \\\n"
								"\tstatic uint64 StaticClassCastFlags(); \\\n"
								"\tstatic UObject* __VTableCtorCaller(FVTableHelper& Helper); \\\n"
								"\tstatic void __DefaultConstructor(const FObjectInitializer& Initializer); \\\n"
								"\t{0}(FVTableHelper& Helper); \\\n"
								"\t{0}({0}&&) = delete; \\\n"
								"\t{0}(const {0}&) = delete; \\\n"
								"\t{0}& operator=({0}&&) = delete; \\\n"
								"\t{0}& operator=(const {0}&) = delete; \\\n",
				def.name, def.super);
			if (!def.declaresConstructor)
			{
				text += fmt::format("\t{}(); \\\n", def.name);
			}
			if (!def.declaresDestructor)
			{
				text += fmt::format("\tvirtual ~{}(); \\\n", def.name);
			}
			return text + "private:\n";
		}

		std::string defineEngineClass(const ClassDef& def)
		{
			std::string text =
				fmt::format("\nUClass* {0}::GetPrivateStaticClass()\n{{\n\treturn MakeStaticClass(&Super::StaticClass);\n}}\n"
							"\nUObject* {0}::__VTableCtorCaller(FVTableHelper& Helper)\n{{\n\treturn new {0}(Helper);\n}}\n"
							"\n{0}::{0}(FVTableHelper& Helper)\n\t: Super(Helper)\n{{\n}}\n",
					def.name);
			if (!def.declaresConstructor)
			{
				text += fmt::format("\n{0}::{0}() = default;\n", def.name);
			}
			return def.declaresDestructor ? text : text + fmt::format("\n{0}::~{0}() = default;\n", def.name);
		}
	} // namespace

	std::string generateEngineHeader(const HeaderDef& header, const std::string& module)
	{
		const std::string api = exportMacro(module);
		const std::string fileId = fmt::format("FID_{}_h", generatedName(header, module));
		std::string text = "#pragma once\n#include \"EngineShape.h\"\n";
		text += fmt::format("#undef CURRENT_FILE_ID\n#define CURRENT_FILE_ID {}\n", fileId);
		for (const EnumDef& def : header.enums)
		{
			text += fmt::format("\nenum class {0} : uint8;\ntemplate <>\n{1} const UEnum* StaticEnum<{0}>();\n", def.name, api);
		}
		for (const DelegateDef& def : header.delegates)
		{
			text += delegateBody(def, api);
		}
		for (const ClassDef& def : header.structs)
		{
			text += fmt::format("\n#define {}_{}_GENERATED_BODY \\\n\tfriend struct Z_Construct_UScriptStruct_{}_Statics; \\\n"
								"\tstatic const UScriptStruct* StaticStruct();\n",
				fileId, def.bodyLine, def.name);
		}
		for (const ClassDef& def : header.classes)
		{
			text += fmt::format("\n#define {}_{}_GENERATED_BODY \\\n{}", fileId, def.bodyLine, engineClassBody(def));
		}
		return text;
	}

	std::string generateEngineSource(const HeaderDef& header, const std::string& module)
	{
		std::string text = fmt::format("#include \"{}\"\n#include \"EngineShape.h\"\n", header.includeName);
		for (const EnumDef& def : header.enums)
		{
			text += fmt::format("\ntemplate <>\n{1} const UEnum* StaticEnum<{0}>()\n{{\n\treturn MakeStaticEnum(sizeof({0}));\n}}\n",
				def.name, exportMacro(module));
		}
		for (const DelegateDef& def : header.delegates)
		{
			text += wrapper(def);
		}
		for (const ClassDef& def : header.structs)
		{
			text += fmt::format(
				"\nconst UScriptStruct* {0}::StaticStruct()\n{{\n\treturn MakeStaticStruct(&PropertyTypeOf<{0}>);\n}}\n", def.name);
		}
		for (const ClassDef& def : header.classes)
		{
			text += defineEngineClass(def);
		}
		return text;
	}
} // namespace HeaderTool
