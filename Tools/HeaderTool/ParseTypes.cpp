#include "Parser.h"

#include <algorithm>

namespace HeaderTool
{
	namespace
	{
		std::string parseTypeName(TokenReader& reader)
		{
			reader.accept("class") || reader.accept("struct") || reader.accept("enum");
			std::string name = reader.accept("::") ? "::" : "";
			name += reader.expectName("a type");
			while (reader.accept("::"))
			{
				name += "::" + reader.expectName("a type");
			}
			return name;
		}

		/** @param depth  of the angle brackets that the type stands in; each takes a piece of the stack. */
		TypeDef parseTypeAt(TokenReader& reader, int depth)
		{
			constexpr int mostDepth = 64;
			if (depth > mostDepth)
			{
				fail(reader.line(), "template arguments may not stand more than {} deep in one another", mostDepth);
			}
			TypeDef type;
			type.line = reader.line();
			type.isConst = reader.accept("const");
			type.name = parseTypeName(reader);
			if (reader.accept("<"))
			{
				do
				{
					type.arguments.push_back(parseTypeAt(reader, depth + 1));
				} while (reader.accept(","));
				reader.expect(">", "after the template arguments of " + type.name);
			}
			type.isConst = reader.accept("const") || type.isConst;
			while (reader.accept("*"))
			{
				++type.pointers;
				reader.accept("const");
			}
			while (reader.accept("&"))
			{
				++type.references;
			}
			return type;
		}

		/** `= value` up to the comma or bracket that ends the parameter. */
		std::string defaultSpelling(TokenReader& reader)
		{
			std::string spelling;
			int depth = 0;
			while (!reader.atEnd() && (depth > 0 || (!reader.is(",") && !reader.is(")"))))
			{
				depth += reader.is("(") || reader.is("{") || reader.is("[");
				depth -= reader.is(")") || reader.is("}") || reader.is("]");
				spelling += reader.next().text;
			}
			return spelling;
		}

		DefaultDef numberDefault(const std::string& sign, const std::string& text)
		{
			const bool isFloat = text.find('.') != std::string::npos;
			const std::string digits = isFloat && text.ends_with('f') ? text.substr(0, text.size() - 1) : text;
			const auto strange = std::count_if(digits.begin(), digits.end(), [](char c) { return c < '0' || c > '9'; });
			const bool isOctal = !isFloat && digits.size() > 1 && digits[0] == '0';
			if (strange != (isFloat ? 1 : 0) || isOctal)
			{
				return {};
			}
			return {isFloat ? DefaultKind::Float : DefaultKind::Integer, sign + digits, "", ""};
		}

		/** Reads one of the accepted forms; the caller sees by the place that the whole default was read. */
		DefaultDef parseSimpleDefault(TokenReader& reader)
		{
			const bool isMacro = reader.is("TEXT") && reader.is("(", 1);
			if (isMacro)
			{
				reader.next();
				reader.next();
			}
			if (isMacro || reader.peek().kind == TokenKind::String)
			{
				const std::string text = parseText(reader);
				return {!isMacro || reader.accept(")") ? DefaultKind::Text : DefaultKind::Unreadable, text, "", ""};
			}
			const std::string sign = reader.accept("-") ? "-" : "";
			const Token& token = reader.next();
			if (token.kind == TokenKind::Number)
			{
				return numberDefault(sign, token.text);
			}
			if (token.kind != TokenKind::Identifier || !sign.empty())
			{
				return {};
			}
			if (token.text == "true" || token.text == "false")
			{
				return {DefaultKind::Bool, token.text, "", ""};
			}
			if (token.text == "nullptr" || token.text == "NULL")
			{
				return {DefaultKind::Null, "", "", ""};
			}
			if (reader.is("::") && reader.peek(1).kind == TokenKind::Identifier)
			{
				reader.next();
				return {DefaultKind::Enumerator, reader.next().text, token.text, ""};
			}
			return {};
		}

		DefaultDef parseDefault(TokenReader& reader)
		{
			TokenReader lookAhead = reader;
			const std::string spelling = defaultSpelling(reader);
			DefaultDef result = spelling.empty() ? DefaultDef() : parseSimpleDefault(lookAhead);
			if (lookAhead.place() != reader.place())
			{
				result = {};
			}
			result.spelling = spelling;
			return result;
		}

		ParameterDef parseParameter(TokenReader& reader)
		{
			ParameterDef parameter;
			if (reader.accept("UPARAM"))
			{
				parameter.specifiers = parseSpecifiers(reader);
			}
			parameter.type = parseType(reader);
			parameter.line = reader.line();
			parameter.name = reader.expectName("a parameter");
			if (reader.accept("="))
			{
				parameter.defaultValue = parseDefault(reader);
			}
			return parameter;
		}
	} // namespace

	TypeDef parseType(TokenReader& reader)
	{
		return parseTypeAt(reader, 0);
	}

	std::vector<ParameterDef> parseParameters(TokenReader& reader)
	{
		std::vector<ParameterDef> parameters;
		reader.expect("(", "before the parameters");
		if (reader.accept(")"))
		{
			return parameters;
		}
		do
		{
			parameters.push_back(parseParameter(reader));
		} while (reader.accept(","));
		reader.expect(")", "or ',' after a parameter");
		return parameters;
	}
} // namespace HeaderTool
