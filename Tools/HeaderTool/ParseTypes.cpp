#include "ParseParts.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

namespace HeaderTool
{
	namespace
	{
		bool isBuiltinWord(const TokenReader& reader)
		{
			constexpr std::array<std::string_view, 8> words = {"unsigned", "signed", "long", "short", "int", "char", "double", "float"};
			return reader.peek().kind == TokenKind::Identifier && std::find(words.begin(), words.end(), reader.peek().text) != words.end();
		}

		std::string parseTypeName(TokenReader& reader)
		{
			std::string name;
			if (isBuiltinWord(reader))
			{
				while (isBuiltinWord(reader))
				{
					name += (name.empty() ? "" : " ") + reader.next().text;
				}
				return name;
			}
			reader.acceptWord("class") || reader.acceptWord("struct") || reader.acceptWord("enum");
			name = reader.acceptSymbol("::") ? "::" : "";
			name += reader.expectName("a type");
			while (reader.acceptSymbol("::"))
			{
				name += "::" + reader.expectName("a type");
			}
			return name;
		}

		TypeDef parseTypeAt(TokenReader& reader, int depth);

		TypeDef parseTypeArgument(TokenReader& reader, int depth)
		{
			if (reader.peek().kind == TokenKind::Number)
			{
				TypeDef number;
				number.line = reader.line();
				number.name = reader.next().text;
				return number;
			}
			TypeDef type = parseTypeAt(reader, depth);
			if (reader.isSymbol("("))
			{
				reader.skipBalanced(); // the signature of a callable; no reflected type has one, as the checks will say
				type.name += "()";
			}
			return type;
		}

		/** @param depth  of the angle brackets that the type stands in; each takes a piece of the stack. */
		TypeDef parseTypeAt(TokenReader& reader, int depth)
		{
			constexpr int mostDepth = 64;
			if (depth > mostDepth)
			{
				reader.fail(fmt::format("template arguments may not stand more than {} deep in one another", mostDepth));
			}
			TypeDef type;
			type.line = reader.line();
			type.isConst = reader.acceptWord("const");
			type.name = parseTypeName(reader);
			if (reader.acceptSymbol("<"))
			{
				do
				{
					type.arguments.push_back(parseTypeArgument(reader, depth + 1));
				} while (reader.acceptSymbol(","));
				reader.expectSymbol(">", "after the template arguments of " + type.name);
			}
			type.isConst = reader.acceptWord("const") || type.isConst;
			while (reader.acceptSymbol("*"))
			{
				++type.pointers;
				reader.acceptWord("const");
			}
			while (reader.acceptSymbol("&"))
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
			while (!reader.atEnd() && (depth > 0 || (!reader.isSymbol(",") && !reader.isSymbol(")"))))
			{
				depth += reader.isSymbol("(") || reader.isSymbol("{") || reader.isSymbol("[");
				depth -= reader.isSymbol(")") || reader.isSymbol("}") || reader.isSymbol("]");
				const bool isText = reader.peek().kind == TokenKind::String;
				spelling += isText ? '"' + reader.peek().text + '"' : reader.peek().text;
				reader.next();
			}
			return spelling;
		}

		DefaultDef numberDefault(const std::string& sign, const std::string& text)
		{
			const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
			const bool isFloat = text.find('.') != std::string::npos;
			const bool hasSuffix = isFloat && (text.ends_with('f') || text.ends_with('F'));
			const std::string digits = hasSuffix ? text.substr(0, text.size() - 1) : text;
			const auto strange = std::count_if(digits.begin(), digits.end(), [&](char c) { return !isDigit(c); });
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
			if (reader.peek().kind == TokenKind::String)
			{
				return {DefaultKind::Text, parseText(reader), "", ""};
			}
			if (reader.isWord("TEXT") && reader.isSymbol("(", 1) && reader.peek(2).kind == TokenKind::String)
			{
				reader.next();
				reader.next();
				const std::string text = parseText(reader);
				return {reader.acceptSymbol(")") ? DefaultKind::Text : DefaultKind::Unreadable, text, "", ""};
			}
			const std::string sign = reader.acceptSymbol("-") ? "-" : "";
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
			if (reader.isSymbol("::") && reader.peek(1).kind == TokenKind::Identifier)
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
			if (reader.acceptWord("UPARAM"))
			{
				parameter.specifiers = parseSpecifiers(reader);
			}
			parameter.type = parseType(reader);
			parameter.line = reader.line();
			parameter.name = reader.expectName("a parameter");
			if (reader.acceptSymbol("="))
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
		reader.expectSymbol("(", "before the parameters");
		if (reader.acceptSymbol(")"))
		{
			return parameters;
		}
		do
		{
			parameters.push_back(parseParameter(reader));
		} while (reader.acceptSymbol(","));
		reader.expectSymbol(")", "or ',' after a parameter");
		return parameters;
	}
} // namespace HeaderTool
