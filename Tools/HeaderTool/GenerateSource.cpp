#include "Generator.h"
#include "Tables.h"
#include "Text.h"

#include <algorithm>
#include <fmt/format.h>
#include <set>

namespace HeaderTool
{
	namespace
	{
		/** The value of one argument, which the function may keep when it takes a copy. */
		std::string argument(const TypeDef& type, size_t index)
		{
			const std::string value = fmt::format("*static_cast<{}*>(Arguments[{}])", storedType(type), index);
			const bool isCopied = type.references == 0 && (type.isContainer() || type.name.starts_with('F'));
			return isCopied ? "MoveTemp(" + value + ")" : value;
		}

		/** `static void Invoke_x(UObject* Self, void* const* Arguments)` */
		std::string thunk(const ClassDef& owner, const FunctionDef& function)
		{
			std::string call;
			for (size_t i = 0; i < function.parameters.size(); ++i)
			{
				call += fmt::format("{}\n\t\t\t{}", i > 0 ? "," : "", argument(function.parameters[i].type, i));
			}
			call = function.isStatic ? fmt::format("{}::{}({})", owner.name, function.name, call)
									 : fmt::format("static_cast<{}*>(Self)->{}({})", owner.name, function.name, call);
			if (function.result)
			{
				const std::string type = storedType(function.result->type);
				const bool dropsConst = function.result->type.pointers > 0 && function.result->type.isConst;
				call = fmt::format("*static_cast<{}*>(Arguments[{}]) = {}", type, function.parameters.size(),
					dropsConst ? fmt::format("const_cast<{}>({})", type, call) : call);
			}
			const bool usesArguments = function.result || !function.parameters.empty();
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

		Table functionTable(const ClassDef& owner)
		{
			std::string text;
			std::string rows;
			for (const FunctionDef& function : owner.functions)
			{
				const Table parameters = parameterTable("_" + function.name, function.parameters, function.result);
				const Table meta = metaTable("FunctionMeta_" + function.name, function.specifiers);
				text += thunk(owner, function) + parameters.text + meta.text + "\n";
				rows += fmt::format("\t\t{{{}, {}, {}, &Invoke_{}, {}}},\n", quote(function.name), flagsOf(function), parameters.reference,
					function.name, meta.reference);
			}
			Table table = makeTable("static constexpr UFunction Functions[]", "Functions", rows);
			table.text.insert(0, text);
			return table;
		}

		Table delegateTable(const ClassDef& owner)
		{
			std::string text;
			std::string rows;
			for (const PropertyDef& property : owner.properties)
			{
				if (!property.specifiers.find("BlueprintAssignable"))
				{
					continue; // scripts do not see it
				}
				const Table meta = metaTable("DelegateMeta_" + property.name, property.specifiers);
				text +=
					fmt::format("\tstatic FMulticastScriptDelegate& Get_{0}(UObject* Owner) {{ return static_cast<{1}*>(Owner)->{0}; }}\n",
						property.name, owner.name);
				text += meta.text;
				rows += fmt::format("\t\t{{{}, &GeneratedSignatures::{}, &Get_{}, {}}},\n", quote(property.name), property.type.name,
					property.name, meta.reference);
			}
			Table table = makeTable("static constexpr FMulticastDelegateProperty Delegates[]", "Delegates", rows);
			table.text.insert(0, text.empty() ? "" : text + "\n");
			return table;
		}

		std::string reflection(const std::string& type, const std::string& members)
		{
			return fmt::format("\ntemplate <>\nstruct FReflectionOf<{}>\n{{\n{}}};\n", type, members);
		}

		std::string defineClass(const ClassDef& def)
		{
			const Table functions = functionTable(def);
			const Table delegates = delegateTable(def);
			const Table meta = metaTable("Meta", def.specifiers);
			const bool isAbstract = def.specifiers.find("Abstract") != nullptr;
			const std::string definition =
				fmt::format("\tstatic constexpr FClassDefinition Definition{{{}, &{}::StaticClass, {}, {}, {}, {}}};\n",
					quote(def.name.substr(1)), def.super, isAbstract ? "nullptr" : fmt::format("&ConstructObject<{}>", def.name),
					functions.reference, delegates.reference, meta.reference);
			return reflection(def.name, functions.text + delegates.text + meta.text + definition) +
				   fmt::format("\nUClass* {0}::StaticClass()\n"
							   "{{\n\tstatic UClass Instance(FReflectionOf<{0}>::Definition);\n\treturn &Instance;\n}}\n",
					   def.name);
		}

		Table fieldTable(const ClassDef& owner)
		{
			std::string text;
			std::string rows;
			for (const PropertyDef& property : owner.properties)
			{
				if (!property.isField())
				{
					continue; // scripts do not see it
				}
				const Table meta = metaTable("FieldMeta_" + property.name, property.specifiers);
				text += fmt::format(
					"\tstatic void* Get_{0}(void* Record) {{ return &static_cast<{1}*>(Record)->{0}; }}\n", property.name, owner.name);
				text += meta.text;
				rows += fmt::format("\t\t{{{}, &PropertyTypeOf<{}>, &Get_{}, {}, {}}},\n", quote(property.name), storedType(property.type),
					property.name, property.specifiers.find("BlueprintReadOnly") != nullptr, meta.reference);
			}
			Table table = makeTable("static constexpr FStructField Fields[]", "Fields", rows);
			table.text.insert(0, text.empty() ? "" : text + "\n");
			return table;
		}

		std::string defineStruct(const ClassDef& def)
		{
			const Table fields = fieldTable(def);
			const Table meta = metaTable("Meta", def.specifiers);
			const std::string definition = fmt::format("\tstatic constexpr UScriptStruct Definition{{{}, &PropertyTypeOf<{}>, {}, {}}};\n",
				quote(def.name.substr(1)), def.name, fields.reference, meta.reference);
			return reflection(def.name, fields.text + meta.text + definition) +
				   fmt::format("\nconst UScriptStruct* {0}::StaticStruct()\n{{\n\treturn &FReflectionOf<{0}>::Definition;\n}}\n", def.name);
		}

		std::string defineEnum(const EnumDef& def)
		{
			std::string rows;
			for (const EnumeratorDef& enumerator : def.enumerators)
			{
				const Specifier* const display = enumerator.specifiers.find("DisplayName");
				rows += fmt::format("\t\t{{{}, {}, {}, {}}},\n", quote(enumerator.name), enumerator.value,
					quote(display ? display->value.value_or("") : enumerator.name), quote(enumerator.comment));
			}
			const Table meta = metaTable("Meta", def.specifiers);
			const std::string definition =
				fmt::format("\tstatic constexpr UEnum Definition{{{}, Enumerators, {}}};\n", quote(def.name), meta.reference);
			const Table enumerators = makeTable("static constexpr FEnumerator Enumerators[]", "Enumerators", rows);
			return reflection(def.name, enumerators.text + meta.text + definition) +
				   fmt::format(
					   "\ntemplate <>\nconst UEnum* StaticEnum<{0}>()\n{{\n\treturn &FReflectionOf<{0}>::Definition;\n}}\n", def.name);
		}

		std::string defineDelegate(const DelegateDef& def)
		{
			const Table parameters = parameterTable("", def.parameters, std::nullopt);
			const Table meta = metaTable("Meta", def.specifiers);
			const auto reference = [&](const Table& table)
			{ return table.text.empty() ? "{}" : fmt::format("FReflectionOf<::{}>::{}", def.name, table.reference); };
			const std::string tables = parameters.text + meta.text;
			return (tables.empty() ? "" : reflection(def.name, tables)) +
				   fmt::format("\nconst UDelegateFunction GeneratedSignatures::{}{{{}, {}, {}}};\n", def.name, quote(def.name),
					   reference(parameters), reference(meta));
		}

		/** Pointers need no include in the header, but the tables need the class itself. */
		void collectClasses(const TypeDef& type, const Symbols& symbols, std::set<std::string>& includes)
		{
			if (const ClassDef* const found = symbols.findClass(type.name))
			{
				includes.insert(found->includeName);
			}
			for (const TypeDef& argument : type.arguments)
			{
				collectClasses(argument, symbols, includes);
			}
		}

		std::string includesOf(const HeaderDef& header, const Symbols& symbols)
		{
			std::set<std::string> includes;
			const auto collect = [&](const ParameterDef& parameter) { collectClasses(parameter.type, symbols, includes); };
			for (const DelegateDef& def : header.delegates)
			{
				std::for_each(def.parameters.begin(), def.parameters.end(), collect);
			}
			for (const ClassDef& def : header.classes)
			{
				for (const FunctionDef& function : def.functions)
				{
					std::for_each(function.parameters.begin(), function.parameters.end(), collect);
					collect(function.result.value_or(ParameterDef()));
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

		/** What the registry takes of one kind. @param entry  with {} for the name of a type. */
		template <class Def>
		Table registered(const std::vector<Def>& defs, std::string_view declaration, const std::string& name,
			fmt::format_string<const std::string&> entry)
		{
			std::string rows;
			for (const Def& def : defs)
			{
				rows += fmt::format("\t\t{},\n", fmt::format(entry, def.name));
			}
			return makeTable(declaration, name, rows);
		}

		std::string registration(const HeaderDef& header, const std::string& module)
		{
			const std::string space = "GeneratedRegistration_" + generatedName(header, module);
			const Table tables[] = {registered(header.classes, "constexpr UClass* (*Classes[])()", "Classes", "&{}::StaticClass"),
				registered(header.structs, "constexpr const UScriptStruct* Structs[]", "Structs", "&FReflectionOf<{}>::Definition"),
				registered(header.enums, "constexpr const UEnum* Enums[]", "Enums", "&FReflectionOf<{}>::Definition"),
				registered(header.delegates, "constexpr const UDelegateFunction* Delegates[]", "Delegates", "&GeneratedSignatures::{}")};
			std::string text;
			std::string references;
			for (const Table& table : tables)
			{
				text += table.text;
				references += ", " + table.reference;
			}
			return fmt::format("\nnamespace {0}\n{{\n{1}\tstatic FCompiledInHeader Header({2}, {3}{4});\n}} // namespace {0}\n", space,
				text, quote(module), quote(header.fileName), references);
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
