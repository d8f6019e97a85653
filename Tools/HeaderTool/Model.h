#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/**
 * What a header declares, as plain values: the parser fills them in, the checks judge them, the generator prints them.
 * Every `line` counts from 1. Texts are UTF-8 and hold names as they are spelled in the header, prefixes included.
 */
namespace HeaderTool
{
	/** `Key`, `Key = Value` or `Key = "Value"` of a reflection macro. */
	struct Specifier
	{
		std::string key;
		std::optional<std::string> value; // empty when only the key stands there
		int line = 1;
	};

	/** The arguments of one reflection macro. */
	struct Specifiers
	{
		std::vector<Specifier> entries;
		std::vector<Specifier> meta; // those inside meta = (...)
		std::string comment; // what the documentation comment in front of the macro says

		/** @param key  compared without regard to case, as the engine does. @return null when it is not there. */
		const Specifier* find(std::string_view key) const;
		const Specifier* findMeta(std::string_view key) const;
	};

	struct TypeDef
	{
		std::string name; // "FString", "TArray", "unsigned int", "std::string"
		std::vector<TypeDef> arguments;
		bool isConst = false;
		int pointers = 0;
		int references = 0; // 2 for an rvalue reference
		int line = 1;

		bool isOutput() const { return references == 1 && !isConst; }
		bool isContainer() const { return name == "TArray" || name == "TMap" || name == "TSet"; }
	};

	enum class DefaultKind
	{
		Bool,
		Integer,
		Float,
		Text,
		Enumerator,
		Null,
		Unreadable // none of the forms that may be written
	};

	struct DefaultDef
	{
		DefaultKind kind = DefaultKind::Unreadable;
		std::string value; // normalised: the enumerator's name, the unescaped text, "" for null
		std::string enumName; // of an enumerator
		std::string spelling;
	};

	struct ParameterDef
	{
		std::string name;
		TypeDef type;
		Specifiers specifiers; // of UPARAM
		std::optional<DefaultDef> defaultValue;
		int line = 1;
	};

	struct FunctionDef
	{
		std::string name;
		Specifiers specifiers;
		std::vector<ParameterDef> parameters;
		std::optional<ParameterDef> result; // "ReturnValue"; empty for void
		bool isStatic = false;
		int line = 1;
	};

	struct PropertyDef
	{
		std::string name;
		TypeDef type;
		Specifiers specifiers;
		int line = 1;
	};

	/** A class, or a struct; a struct has no functions. */
	struct ClassDef
	{
		std::string name;
		std::string super; // empty when it derives from nothing
		std::vector<std::string> otherBases;
		Specifiers specifiers;
		std::vector<FunctionDef> functions;
		std::vector<PropertyDef> properties;
		bool declaresConstructor = false;
		bool declaresDestructor = false;
		int line = 1;
		int bodyLine = 0; // of GENERATED_BODY
		std::string includeName; // of its header
	};

	struct EnumeratorDef
	{
		std::string name;
		long long value = 0;
		Specifiers specifiers; // of UMETA: everything stands in entries
		std::string comment; // what the documentation comment in front of its name says
		int line = 1;
	};

	struct EnumDef
	{
		std::string name;
		bool isScoped = false;
		std::string base; // "uint8"; empty when not given
		Specifiers specifiers;
		std::vector<EnumeratorDef> enumerators;
		int line = 1;
	};

	struct DelegateDef
	{
		std::string name;
		Specifiers specifiers; // nothing but the comment: the macro takes none
		std::vector<ParameterDef> parameters;
		int line = 1;
	};

	struct IncludeDef
	{
		std::string file; // between the quotes or brackets
		int line = 1;
	};

	struct HeaderDef
	{
		std::string path; // as given on the command line
		std::string fileName; // "Sample.h"
		std::string includeName; // how sources include it: the part of the path below the last folder called Public
		bool isReference = false; // read for the checks only
		bool startsWithPragmaOnce = false;
		std::vector<IncludeDef> includes;
		std::vector<ClassDef> classes;
		std::vector<ClassDef> structs;
		std::vector<EnumDef> enums;
		std::vector<DelegateDef> delegates;

		/** "Sample" */
		std::string baseName() const;
		bool isReflected() const { return !(classes.empty() && structs.empty() && enums.empty() && delegates.empty()); }
	};

	/** @return the type as one would write it: "const TArray<FString>&". */
	std::string spell(const TypeDef& type);

	/** @return whether two names are the same to the engine, which does not look at the case of letters. */
	bool sameName(std::string_view a, std::string_view b);
} // namespace HeaderTool
