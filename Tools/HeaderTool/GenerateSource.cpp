#include "Generator.h"
#include "StringLiteral.h"
#include "Tables.h"

#include <fmt/format.h>
#include <set>

namespace HeaderTool
{
	namespace
	{
		std::optional<ParameterDef> resultOf(const FunctionDef& function)
		{
			if (!function.returnType)
			{
				return std::nullopt;
			}
			ParameterDef result;
			result.name = "ReturnValue";
			result.type = *function.returnType;
			result.specifiers = function.returnSpecifiers;
			return result;
		}

		/** `static void Invoke_x(UObject* Self, void* const* Arguments)` */
		std::string thunk(const ClassDef& owner, const FunctionDef& function)
		{
			std::string call;
			for (size_t i = 0; i < function.parameters.size(); ++i)
			{
				const TypeDef& type = function.parameters[i].type;
				call += fmt::format("{}\n\t\t\t*static_cast<{}*>(Arguments[{}])", i > 0 ? "," : "", storedType(type), i);
			}
			call = function.isStatic ? fmt::format("{}::{}({})", owner.name, function.name, call)
									 : fmt::format("static_cast<{}*>(Self)->{}({})", owner.name, function.name, call);
			if (const std::optional<ParameterDef> result = resultOf(function))
			{
				const std::string type = storedType(result->type);
				const bool dropsConst = result->type.pointers > 0 && result->type.isConst;
				call = fmt::format("*static_cast<{}*>(Arguments[{}]) = {}", type, function.parameters.size(),
					dropsConst ? fmt::format("const_cast<{}>({})", type, call) : call);
			}
			const bool usesArguments = function.returnType || !function.parameters.empty();
			return fmt::format("\tstatic void Invoke_{}(UObject*{}, void* const*{})\n\t{{\n\t\t{};\n\t}}\n", function.name,
				function.isStatic ? "" : " Self", usesArguments ? " Arguments" : "", call);
		}

		std::string flagsOf(const FunctionDef& function)
		{
			std::string flags = function.isStatic ? "FUNC_Static" : "FUNC_None";
			const bool isPure = function.specifiers.find("BlueprintPure") != nullptr;
			if (isPure || function.specifiers.find("BlueprintCallable"))
			{
				flags += " | FUNC_BlueprintCallable";
			}
			return isPure ? flags + " | FUNC_BlueprintPure" : flags;
		}

		std::string functionTables(const ClassDef& owner)
		{
			std::string text;
			std::string rows;
			for (const FunctionDef& function : owner.functions)
			{
				const std::optional<ParameterDef> result = resultOf(function);
				const std::string parameters = parameterTable("_" + function.name, function.parameters, result ? &*result : nullptr);
				const std::string metaName = "FunctionMeta_" + function.name;
				text += thunk(owner, function) + parameters + metaTable(metaName, function.specifiers) + "\n";
				rows += fmt::format("\t\t{{{}, {}, {}, &Invoke_{}, {}}},\n", quote(function.name), flagsOf(function),
					parameters.empty() ? "{}" : "Parameters_" + function.name, function.name, metaReference(metaName, function.specifiers));
			}
			return rows.empty() ? rows : fmt::format("{}\tstatic constexpr UFunction Functions[] = {{\n{}\t}};\n", text, rows);
		}

		std::string delegateTables(const ClassDef& owner)
		{
			std::string text;
			std::string rows;
			for (const PropertyDef& property : owner.properties)
			{
				if (!property.specifiers.find("BlueprintAssignable"))
				{
					continue; // scripts do not see it
				}
				const std::string metaName = "DelegateMeta_" + property.name;
				text +=
					fmt::format("\tstatic FMulticastScriptDelegate& Get_{0}(UObject* Owner) {{ return static_cast<{1}*>(Owner)->{0}; }}\n",
						property.name, owner.name);
				text += metaTable(metaName, property.specifiers);
				rows += fmt::format("\t\t{{{}, &GeneratedSignatures::{}, &Get_{}, {}}},\n", quote(property.name), property.type.name,
					property.name, metaReference(metaName, property.specifiers));
			}
			return rows.empty() ? rows
								: fmt::format("{}\n\tstatic constexpr FMulticastDelegateProperty Delegates[] = {{\n{}\t}};\n", text, rows);
		}

		std::string reflection(const std::string& type, const std::string& members)
		{
			return fmt::format("\ntemplate <>\nstruct FReflectionOf<{}>\n{{\n{}}};\n", type, members);
		}

		std::string defineClass(const ClassDef& def)
		{
			const std::string functions = functionTables(def);
			const std::string delegates = delegateTables(def);
			const bool isAbstract = def.specifiers.find("Abstract") != nullptr;
			const std::string definition =
				fmt::format("\tstatic constexpr FClassDefinition Definition{{{}, &{}::StaticClass, {}, {}, {}, {}}};\n",
					quote(def.name.substr(1)), def.super, isAbstract ? "nullptr" : fmt::format("&ConstructObject<{}>", def.name),
					functions.empty() ? "{}" : "Functions", delegates.empty() ? "{}" : "Delegates", metaReference("Meta", def.specifiers));
			return reflection(def.name, functions + delegates + metaTable("Meta", def.specifiers) + definition) +
				   fmt::format("\nUClass* {0}::StaticClass()\n"
							   "{{\n\tstatic UClass Instance(FReflectionOf<{0}>::Definition);\n\treturn &Instance;\n}}\n",
					   def.name);
		}

		std::string defineStruct(const StructDef& def)
		{
			const std::string definition = fmt::format("\tstatic constexpr UScriptStruct Definition{{{}, &PropertyTypeOf<{}>, {}}};\n",
				quote(def.name.substr(1)), def.name, metaReference("Meta", def.specifiers));
			return reflection(def.name, metaTable("Meta", def.specifiers) + definition) +
				   fmt::format("\nconst UScriptStruct* {0}::StaticStruct()\n{{\n\treturn &FReflectionOf<{0}>::Definition;\n}}\n", def.name);
		}

		std::string defineEnum(const EnumDef& def)
		{
			std::string rows;
			for (const EnumeratorDef& enumerator : def.enumerators)
			{
				const Specifier* const display = enumerator.specifiers.find("DisplayName");
				rows += fmt::format("\t\t{{{}, {}, {}}},\n", quote(enumerator.name), enumerator.value,
					quote(display ? display->value.value_or("") : enumerator.name));
			}
			const std::string definition = fmt::format(
				"\tstatic constexpr UEnum Definition{{{}, Enumerators, {}}};\n", quote(def.name), metaReference("Meta", def.specifiers));
			return reflection(def.name, fmt::format("\tstatic constexpr FEnumerator Enumerators[] = {{\n{}\t}};\n", rows) +
											metaTable("Meta", def.specifiers) + definition) +
				   fmt::format(
					   "\ntemplate <>\nconst UEnum* StaticEnum<{0}>()\n{{\n\treturn &FReflectionOf<{0}>::Definition;\n}}\n", def.name);
		}

		std::string defineDelegate(const DelegateDef& def)
		{
			const std::string parameters = parameterTable("", def.parameters, nullptr);
			const std::string meta = metaTable("Meta", def.specifiers);
			const auto reference = [&](const std::string& table, std::string_view name)
			{ return table.empty() ? "{}" : fmt::format("FReflectionOf<::{}>::{}", def.name, name); };
			const std::string text = parameters.empty() && meta.empty() ? "" : reflection(def.name, parameters + meta);
			return text + fmt::format("\nconst UDelegateFunction GeneratedSignatures::{}{{{}, {}, {}}};\n", def.name, quote(def.name),
							  reference(parameters, "Parameters"), reference(meta, "Meta"));
		}

		/** Pointers need no include in the header, but the tables need the class itself. */
		void collectClasses(const TypeDef& type, const Symbols& symbols, std::set<std::string>& includes)
		{
			if (const Found<ClassDef> found = symbols.findClass(type.name))
			{
				includes.insert(found.header->includeName);
			}
			for (const TypeDef& argument : type.arguments)
			{
				collectClasses(argument, symbols, includes);
			}
		}

		std::string includesOf(const HeaderDef& header, const Symbols& symbols)
		{
			std::set<std::string> includes;
			const auto collect = [&](const std::vector<ParameterDef>& parameters)
			{
				for (const ParameterDef& parameter : parameters)
				{
					collectClasses(parameter.type, symbols, includes);
				}
			};
			for (const DelegateDef& def : header.delegates)
			{
				collect(def.parameters);
			}
			for (const ClassDef& def : header.classes)
			{
				for (const FunctionDef& function : def.functions)
				{
					collect(function.parameters);
					collectClasses(function.returnType.value_or(TypeDef()), symbols, includes);
				}
			}
			includes.erase(header.includeName);
			includes.insert({"UObject/Class.h", "UObject/Object.h"});
			std::string text = fmt::format("#include \"{}\"\n\n", header.includeName);
			for (const std::string& include : includes)
			{
				text += fmt::format("#include \"{}\"\n", include);
			}
			return text;
		}

		template <class Def>
		std::string pointerTable(const std::vector<Def>& defs, std::string_view declaration, std::string_view entry)
		{
			std::string rows;
			for (const Def& def : defs)
			{
				rows += fmt::format("\t\t{},\n", fmt::format(fmt::runtime(entry), def.name));
			}
			return rows.empty() ? rows : fmt::format("\t{} = {{\n{}\t}};\n", declaration, rows);
		}

		std::string registration(const HeaderDef& header, const std::string& module)
		{
			const std::string space = GeneratedNames(header, module).registration;
			const auto reference = [](const auto& list, std::string_view name) { return list.empty() ? std::string_view("{}") : name; };
			return fmt::format("\nnamespace {}\n{{\n", space) +
				   pointerTable(header.classes, "constexpr UClass* (*Classes[])()", "&{}::StaticClass") +
				   pointerTable(header.structs, "constexpr const UScriptStruct* Structs[]", "&FReflectionOf<{}>::Definition") +
				   pointerTable(header.enums, "constexpr const UEnum* Enums[]", "&FReflectionOf<{}>::Definition") +
				   pointerTable(header.delegates, "constexpr const UDelegateFunction* Delegates[]", "&GeneratedSignatures::{}") +
				   fmt::format("\tstatic FCompiledInHeader Header({}, {}, {}, {}, {});\n}} // namespace {}\n", quote(header.fileName),
					   reference(header.classes, "Classes"), reference(header.structs, "Structs"), reference(header.enums, "Enums"),
					   reference(header.delegates, "Delegates"), space);
		}

		template <class Def, class Define>
		std::string defineAll(const std::vector<Def>& defs, Define define)
		{
			std::string text;
			for (const Def& def : defs)
			{
				text += define(def);
			}
			return text;
		}
	} // namespace

	std::string generateSource(const HeaderDef& header, const Symbols& symbols, const std::string& module)
	{
		const std::string title = fmt::format("// Generated from {}. Do not edit.\n", header.fileName);
		if (!header.isReflected())
		{
			return title;
		}
		return title + includesOf(header, symbols) + defineAll(header.enums, defineEnum) + defineAll(header.structs, defineStruct) +
			   defineAll(header.delegates, defineDelegate) + defineAll(header.classes, defineClass) + registration(header, module);
	}
} // namespace HeaderTool
