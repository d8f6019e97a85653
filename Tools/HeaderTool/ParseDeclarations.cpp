#include "ParseParts.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fmt/format.h>

namespace HeaderTool
{
	namespace
	{
		constexpr std::array<std::string_view, 10> countWords = {"", "_OneParam", "_TwoParams", "_ThreeParams", "_FourParams",
			"_FiveParams", "_SixParams", "_SevenParams", "_EightParams", "_NineParams"};

		/** Words before the return type. */
		void parseFunctionPrefix(TokenReader& reader, FunctionDef& function)
		{
			for (;;)
			{
				if (reader.isWord("UPARAM"))
				{
					reader.next();
					function.returnSpecifiers = parseSpecifiers(reader);
				}
				else if (reader.acceptWord("static"))
				{
					function.isStatic = true;
				}
				else if (reader.acceptWord("virtual"))
				{
					function.isVirtual = true;
				}
				else if (reader.peek().text.ends_with("_API") || reader.isWord("inline") || reader.isWord("FORCEINLINE"))
				{
					reader.next();
				}
				else
				{
					return;
				}
			}
		}

		/** From the parameter list's end to the end of the declaration. */
		void parseFunctionSuffix(TokenReader& reader, FunctionDef& function)
		{
			function.isConst = reader.acceptWord("const");
			while (reader.acceptWord("override") || reader.acceptWord("final") || reader.acceptWord("noexcept"))
			{
			}
			if (reader.isSymbol("{"))
			{
				reader.skipBalanced();
				reader.acceptSymbol(";");
				return;
			}
			reader.expectSymbol(";", fmt::format("after the declaration of {}", function.name));
		}

		long long parseEnumeratorValue(TokenReader& reader, const std::string& name)
		{
			const bool isNegative = reader.acceptSymbol("-");
			const std::string text = reader.peek().text;
			const bool isHex = text.starts_with("0x") || text.starts_with("0X");
			const char* const begin = text.data() + (isHex ? 2 : 0);
			const char* const end = text.data() + text.size();
			long long value = 0;
			const auto [stop, error] = std::from_chars(begin, end, value, isHex ? 16 : 10);
			const bool isOctal = text.size() > 1 && text[0] == '0' && !isHex;
			if (reader.peek().kind != TokenKind::Number || stop != end || error != std::errc() || isOctal)
			{
				reader.fail(fmt::format("the value of {} must be a plain number, found {}", name, reader.found()));
			}
			reader.next();
			return isNegative ? -value : value;
		}

		EnumeratorDef parseEnumerator(TokenReader& reader, long long nextValue)
		{
			EnumeratorDef enumerator;
			enumerator.line = reader.line();
			enumerator.name = reader.expectName("an enumerator");
			enumerator.value = nextValue;
			const auto parseMeta = [&]
			{
				if (reader.acceptWord("UMETA"))
				{
					enumerator.specifiers = parseSpecifiers(reader);
				}
			};
			parseMeta();
			if (reader.acceptSymbol("="))
			{
				enumerator.value = parseEnumeratorValue(reader, enumerator.name);
				parseMeta();
			}
			return enumerator;
		}

		/** The macro splits its arguments at every comma outside round brackets, so a comma in <...> breaks a type in two. */
		void refuseSplitType(const TypeDef& type)
		{
			if (type.arguments.size() > 1)
			{
				throw ParseError(type.line, fmt::format("the comma in '{}' splits the macro's arguments", spell(type)));
			}
			for (const TypeDef& argument : type.arguments)
			{
				refuseSplitType(argument);
			}
		}
	} // namespace

	FunctionDef parseFunction(TokenReader& reader)
	{
		FunctionDef function;
		parseFunctionPrefix(reader, function);
		if (!reader.acceptWord("void"))
		{
			function.returnType = parseType(reader);
		}
		function.line = reader.line();
		function.name = reader.expectName("a function");
		function.parameters = parseParameters(reader);
		parseFunctionSuffix(reader, function);
		return function;
	}

	PropertyDef parseProperty(TokenReader& reader)
	{
		PropertyDef property;
		property.type = parseType(reader);
		property.line = reader.line();
		property.name = reader.expectName("a property");
		if (reader.acceptSymbol(":"))
		{
			reader.next(); // width of a bit field
		}
		if (reader.acceptSymbol("="))
		{
			while (!reader.atEnd() && !reader.isSymbol(";") && !reader.isSymbol("}"))
			{
				if (reader.isSymbol("(") || reader.isSymbol("[") || reader.isSymbol("{"))
				{
					reader.skipBalanced();
				}
				else
				{
					reader.next();
				}
			}
		}
		else if (reader.isSymbol("{"))
		{
			reader.skipBalanced();
		}
		reader.expectSymbol(";", fmt::format("after the declaration of {}", property.name));
		return property;
	}

	EnumDef parseEnum(TokenReader& reader)
	{
		EnumDef result;
		if (!reader.acceptWord("enum"))
		{
			reader.fail(fmt::format("expected 'enum' behind UENUM, found {}", reader.found()));
		}
		result.isScoped = reader.acceptWord("class");
		result.line = reader.line();
		result.name = reader.expectName("an enumeration");
		if (reader.acceptSymbol(":"))
		{
			result.base = spell(parseType(reader));
		}
		reader.expectSymbol("{", fmt::format("before the enumerators of {}", result.name));
		long long nextValue = 0;
		while (!reader.acceptSymbol("}"))
		{
			result.enumerators.push_back(parseEnumerator(reader, nextValue));
			nextValue = result.enumerators.back().value + 1;
			if (!reader.isSymbol("}"))
			{
				reader.expectSymbol(",", "or '}' after an enumerator");
			}
		}
		reader.expectSymbol(";", fmt::format("after {}", result.name));
		return result;
	}

	DelegateDef parseDelegate(TokenReader& reader)
	{
		constexpr std::string_view prefix = "DECLARE_DYNAMIC_MULTICAST_DELEGATE";
		const std::string macro = reader.peek().text;
		const auto count =
			macro.starts_with(prefix) ? std::find(countWords.begin(), countWords.end(), macro.substr(prefix.size())) : countWords.end();
		if (count == countWords.end())
		{
			reader.fail(fmt::format("{} is not available in this host; multicast delegates with up to nine parameters are", macro));
		}
		DelegateDef delegate;
		delegate.specifiers.comment = reader.next().comment;
		delegate.declaredCount = static_cast<int>(count - countWords.begin());
		reader.expectSymbol("(", fmt::format("behind {}", macro));
		delegate.line = reader.line();
		delegate.name = reader.expectName("a delegate");
		while (reader.acceptSymbol(","))
		{
			ParameterDef parameter;
			parameter.type = parseType(reader);
			refuseSplitType(parameter.type);
			reader.expectSymbol(",", fmt::format("between the type '{}' and the parameter's name", spell(parameter.type)));
			parameter.line = reader.line();
			parameter.name = reader.expectName("a parameter");
			delegate.parameters.push_back(parameter);
		}
		reader.expectSymbol(")", fmt::format("at the end of {}", macro));
		reader.acceptSymbol(";");
		return delegate;
	}
} // namespace HeaderTool
