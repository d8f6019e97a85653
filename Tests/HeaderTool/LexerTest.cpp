#include "Lexer.h"
#include "StringLiteral.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

using namespace HeaderTool;

namespace
{
	struct Case
	{
		const char* name;
		std::string_view text;
		std::string expected; // "<comment>line:kind:text" each followed by a space; or the message
	};

	std::string describe(std::string_view text)
	{
		Diagnostics diagnostics;
		std::string result;
		for (const Token& token : lex(text, "X.h", diagnostics))
		{
			if (token.kind != TokenKind::End)
			{
				result += token.comment.empty() ? "" : fmt::format("<{}>", token.comment);
				result += fmt::format("{}:{}:{}{} ", token.line, "INSCYD"[static_cast<size_t>(token.kind)], token.prefix, token.text);
			}
		}
		for (const Diagnostic& diagnostic : diagnostics)
		{
			result += fmt::format("!{}:{}", diagnostic.line, diagnostic.message);
		}
		return result;
	}

	const Case cases[] = {
		{"Words", "a _b1 \xC3\xA4x\n::c:d", "1:I:a 1:I:_b1 1:I:\xC3\xA4x 2:Y::: 2:I:c 2:Y:: 2:I:d "},
		{"Numbers", "1'000 0x1F 1.5e-3f .5 0xE+1 2.", "1:N:1'000 1:N:0x1F 1:N:1.5e-3f 1:N:.5 1:N:0xE 1:Y:+ 1:N:1 1:N:2. "},
		{"Escapes", R"("\"a\\\t\x41\101\u00e4\U0001F600")", "1:S:\"a\\\tAA\xC3\xA4\xF0\x9F\x98\x80 "},
		{"PrefixesAndRaw", "u8\"a\" L\"b\" R\"x(\")\" )x\" R2", "1:S:u8a 1:S:Lb 1:S:R\"x(\")\" )x\" 1:I:R2 "},
		{"Characters", R"('\'' '"' 'a')", R"(1:C:'\'' 1:C:'"' 1:C:'a' )"},
		{"Comments", "a/* * / \n // */b // c \" \n/**/d", "1:I:a 2:I:b 3:I:d "},
		{"Documentation", "/** one */ a /** two */ /**\n\t * three * 3\n\t *\n\t *   @param x\n\t */\n// and\nb c",
			"<one>1:I:a <three * 3\n\n  @param x>7:I:b 7:I:c "},
		{"LinesOfDocumentation", "a // no\n\n/// /one\n//two \nb /** x */\n// y\nc\n// z\n/* */ d",
			"1:I:a </one\ntwo>5:I:b <x>7:I:c 9:I:d "},
		{"NoDocumentation", "/**/ a /***/ b /** x */ /* y */ c\n# d /** z */\ne", "1:I:a 1:I:b 1:I:c 2:D:d 3:I:e "},
		{"QuotesHideComments", "\"/*\" '\"' \"//\" x", "1:S:/* 1:C:'\"' 1:S:// 1:I:x "},
		{"JoinedLines", "ab\\\ncd // gone \\\nstill gone\ne \"f\\\ng\"", "1:I:abcd 4:I:e 4:S:fg "},
		{"WindowsLines", "\xEF\xBB\xBFone\r\n#x \\\r\n y\r\n\"z\"\r\n", "1:I:one 2:D:x  y 4:S:z "},
		{"Directives", "# define A \"//\" /* c\nd */ 1 // e\n a # b", "1:D:define A \"//\"   1 3:I:a 3:Y:# 3:I:b "},
		{"LoneApostropheInDirective", "#error don't\nx", "1:D:error don't 2:I:x "},
		{"OpenString", "a\n\"b\nc", "1:I:a !2:this quoted text does not end on its line"},
		{"OpenComment", "a\n\n/* b\n", "1:I:a !3:this comment does not end"},
		{"OpenRawString", "R\"(a)", "!1:this raw string does not end"},
		{"UnknownEscape", "\"a\\q\"", "!1:unknown escape '\\q' in a string"},
		{"ShortUnicodeEscape", "\"\\u12\"", "!1:unknown escape '\\u' in a string"},
		{"Surrogate", "\"\\uD800\"", "!1:an escape in this string names no Unicode character"},
	};
} // namespace

TEST(Lexer, GivesTheExpectedTokens)
{
	for (const Case& c : cases)
	{
		EXPECT_EQ(describe(c.text), c.expected) << c.name;
	}
}

TEST(StringLiteral, QuotedTextReadsBackAsItself)
{
	using namespace std::string_view_literals;
	for (const std::string_view value : {"a\"b\\c\nd\t\x01"sv, "\x01\x37\0\x38"sv, "\xC3\xA4?\x7F"sv})
	{
		const std::string literal = quote(value);
		EXPECT_EQ(quotedLength(literal, 1), literal.size());
		EXPECT_EQ(unescape(std::string_view(literal).substr(1, literal.size() - 2), 1), value);
	}
}
