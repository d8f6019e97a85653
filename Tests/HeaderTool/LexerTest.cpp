#include "Lexer.h"
#include "Text.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

using namespace HeaderTool;

namespace
{
	struct TokenCase
	{
		const char* name;
		std::string_view text;
		std::string expected; // "<comment>line:kind:text" each followed by a space
	};

	std::string describe(std::string_view text)
	{
		std::string result;
		for (const Token& token : lex(text))
		{
			if (token.kind != TokenKind::End)
			{
				result += token.comment.empty() ? "" : fmt::format("<{}>", token.comment);
				result += fmt::format("{}:{}:{} ", token.line, "INSCYD"[static_cast<size_t>(token.kind)], token.text);
			}
		}
		return result;
	}

	const TokenCase cases[] = {
		{"Words", "a _b1 \xC3\xA4x\n::c:d", "1:I:a 1:I:_b1 1:I:\xC3\xA4x 2:Y::: 2:I:c 2:Y:: 2:I:d "},
		{"Numbers", "1'000 0x1F 1.5f 2.", "1:N:1'000 1:N:0x1F 1:N:1.5f 1:N:2. "},
		{"Strings", R"("\"a\\" u8"b" "")", R"(1:S:"\"a\\" 1:I:u8 1:S:"b" 1:S:"" )"},
		{"Characters", R"('\'' '"' 'a')", R"(1:C:'\'' 1:C:'"' 1:C:'a' )"},
		{"Comments", "a/* * / \n // */b // c \" \n/**/d", "1:I:a 2:I:b 3:I:d "},
		{"Documentation", "/** one */ a /** two */ /**\n\t * three * 3\n\t *\n\t *   @param x\n\t */\n// and\nb c",
			"<one>1:I:a <three * 3\n\n  @param x>7:I:b 7:I:c "},
		{"LinesOfDocumentation", "a // no\n\n/// /one\n//two \nb /** x */\n// y\nc\n// z\n/* */ d",
			"1:I:a </one\ntwo>5:I:b <x>7:I:c 9:I:d "},
		{"NoDocumentation", "/**/ a /***/ b /** x */ /* y */ c\n# d /** z */\ne", "1:I:a 1:I:b 1:I:c 2:D:d 3:I:e "},
		{"QuotesHideComments", "\"/*\" '\"' \"//\" x", R"(1:S:"/*" 1:C:'"' 1:S:"//" 1:I:x )"},
		{"JoinedLines", "ab\\\ncd // gone \\\nstill gone\ne \"f\\\ng\"", "1:I:abcd 4:I:e 4:S:\"fg\" "},
		{"WindowsLines", "\xEF\xBB\xBFone\r\n#x \\\r\n y\r\n\"z\"\r\n", "1:I:one 2:D:x  y 4:S:\"z\" "},
		{"Directives", "# define A \"//\" /* c\nd */ 1 // e\n a # b", "1:D:define A \"//\"   1 3:I:a 3:Y:# 3:I:b "},
		{"LoneApostropheInDirective", "#error don't\nx", "1:D:error don't 2:I:x "},
	};
} // namespace

TEST(Lexer, GivesTheExpectedTokens)
{
	for (const TokenCase& c : cases)
	{
		EXPECT_EQ(describe(c.text), c.expected) << c.name;
	}
}

TEST(StringLiteral, IsReadAndWritten)
{
	EXPECT_EQ(unescape(R"(\"a\\\t\'\n b)", 1), "\"a\\\t'\n b");
	EXPECT_EQ(quote("a\"b\\c\nd\t\x01\x37\xC3\xA4?\x7F"), "\"a\\\"b\\\\c\\nd\\011\\0017\xC3\xA4?\\177\"");
}

TEST(Utf8, EndsAtTheFirstByteThatBelongsToNoCharacter)
{
	EXPECT_EQ(findNonUtf8("a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"), 10u);
	for (const char* const text : {"a\xC3", "a\x80", "a\xC0\x80", "a\xED\xA0\x80", "a\xF4\x90\x80\x80", "a\xF0\x8F\xBF\xBF", "a\xC3z"})
	{
		EXPECT_EQ(findNonUtf8(text), 1u);
	}
}
