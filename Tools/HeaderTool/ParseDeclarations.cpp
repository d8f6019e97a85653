#include "Parser.h"

#include <charconv>

namespace HeaderTool
{
	namespace
	{
		/** Words before the return type. */
		void parseFunctionPrefix(TokenReader& reader, FunctionDef& function, ParameterDef& result)
		{
			for (;;)
			{
				if (reader.is("UPARAM"))
				{
					reader.next();
					result.specifiers = parseSpecifiers(reader);
				}
				else if (reader.accept("static"))
				{
					function.isStatic = true;
				}
				else if (reader.peek().text.ends_with("_API"))
				{
					reader.next();
				}
				else if (!reader.accept("virtual") && !reader.accept("inline") && !reader.accept("FORCEINLINE"))
				{
					return;
				}
			}
		}

		/** From the parameter list's end to the end of the declaration. */
		void parseFunctionSuffix(TokenReader& reader, FunctionDef& function)
		{
			while (reader.accept("const") || reader.accept("override") || reader.accept("final") || reader.accept("noexcept"))
			{
			}
			if (reader.is("{"))
			{
				reader.skip();
				reader.accept(";");
				return;
			}
			reader.expect(";", "after the declaration of " + function.name);
		}

		long long parseEnumeratorValue(TokenReader& reader, const std::string& name)
		{
			const std::string text = reader.peek().text;
			const bool isHex = text.starts_with("0x") || text.starts_with("0X");
			const char* const begin = text.data() + (isHex ? 2 : 0);
			const char* const end = text.data() + text.size();
			long long value = 0;
			const auto [stop, error] = std::from_chars(begin, end, value, isHex ? 16 : 10);
			const bool isOctal = text.size() > 1 && text[0] == '0' && !isHex;
			if (reader.peek().kind != TokenKind::Number || stop != end || error != std::errc() || isOctal)
			{
				fail(reader.line(), "the value of {} must be a plain number, found {}", name, reader.found());
			}
			reader.next();
			return value;
		}

		EnumeratorDef parseEnumerator(TokenReader& reader, long long nextValue)
		{
			EnumeratorDef enumerator;
			enumerator.line = reader.line();
			enumerator.comment = reader.peek().comment;
			enumerator.name = reader.expectName("an enumerator");
			enumerator.value = nextValue;
			if (reader.accept("="))
			{
				enumerator.value = parseEnumeratorValue(reader, enumerator.name);
			}
			if (reader.accept("UMETA"))
			{
				enumerator.specifiers = parseSpecifiers(reader);
			}
			return enumerator;
		}
	} // namespace

	ClassDef parseTypeHead(TokenReader& reader, std::string_view keyword)
	{
		ClassDef head;
		reader.expect(keyword, "after its macro");
		if (reader.peek().text.ends_with("_API"))
		{
			reader.next();
		}
		head.line = reader.line();
		head.name = reader.expectName("a type");
		reader.accept("final");
		std::vector<std::string> bases;
		if (reader.accept(":"))
		{
			do
			{
				reader.expect("public", "before a base of " + head.name);
				bases.push_back(spell(parseType(reader)));
			} while (reader.accept(","));
			head.super = bases.front();
			head.otherBases.assign(bases.begin() + 1, bases.end());
		}
		return head;
	}

	FunctionDef parseFunction(TokenReader& reader)
	{
		FunctionDef function;
		ParameterDef result;
		parseFunctionPrefix(reader, function, result);
		if (!reader.accept("void"))
		{
			result.name = "ReturnValue";
			result.line = reader.line();
			result.type = parseType(reader);
			function.result = result;
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
		if (reader.accept(":"))
		{
			reader.next(); // width of a bit field
		}
		if (reader.is("{"))
		{
			reader.skip();
		}
		else if (reader.accept("="))
		{
			while (!reader.atEnd() && !reader.is(";") && !reader.is("}"))
			{
				reader.skip();
			}
		}
		reader.expect(";", "after the declaration of " + property.name);
		return property;
	}

	EnumDef parseEnum(TokenReader& reader)
	{
		EnumDef result;
		reader.expect("enum", "after UENUM");
		result.isScoped = reader.accept("class");
		result.line = reader.line();
		result.name = reader.expectName("an enumeration");
		if (reader.accept(":"))
		{
			result.base = spell(parseType(reader));
		}
		reader.expect("{", "before the enumerators of " + result.name);
		long long nextValue = 0;
		while (!reader.accept("}"))
		{
			result.enumerators.push_back(parseEnumerator(reader, nextValue));
			nextValue = result.enumerators.back().value + 1;
			if (!reader.is("}"))
			{
				reader.expect(",", "or '}' after an enumerator");
			}
		}
		reader.expect(";", "after " + result.name);
		return result;
	}

	DelegateDef parseDelegate(TokenReader& reader)
	{
		const std::string macro = reader.peek().text;
		if (!macro.starts_with("DECLARE_DYNAMIC_MULTICAST_DELEGATE"))
		{
			fail(reader.line(), "{} is not available in this host; multicast delegates are", macro);
		}
		DelegateDef delegate;
		delegate.specifiers.comment = reader.next().comment;
		reader.expect("(", "after " + macro);
		delegate.line = reader.line();
		delegate.name = reader.expectName("a delegate");
		while (reader.accept(","))
		{
			ParameterDef parameter;
			parameter.type = parseType(reader);
			reader.expect(",", fmt::format("between the type '{}' and the parameter's name", spell(parameter.type)));
			parameter.line = reader.line();
			parameter.name = reader.expectName("a parameter");
			delegate.parameters.push_back(parameter);
		}
		reader.expect(")", "at the end of " + macro);
		reader.accept(";");
		return delegate;
	}
} // namespace HeaderTool
