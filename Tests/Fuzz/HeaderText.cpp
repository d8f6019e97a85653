// The header tool: any text is a header that can be generated for, or has a mistake on one of its lines.

#include "Checks.h"
#include "Fuzz.h"
#include "Generator.h"
#include "Parser.h"

#include <algorithm>

namespace
{
	using namespace HeaderTool;

	/** Part of an input may come again and again, for what stands deep in one another. */
	std::string Unfold(FFuzzInput& Input)
	{
		constexpr int64 Most = 1200; // bytes, enough for what is too deep
		const int64 Wished = Input.Number(0, 100);
		std::string Text, Again(Input.Field());
		const int64 Times = std::min(Wished, 1 + Most / static_cast<int64>(1 + Again.size()));
		for (int64 Time = 0; Time < Times; ++Time)
		{
			Text += Again;
		}
		const std::string_view Rest = Input.Rest();
		const size_t Place = std::min(Rest.find('@'), Rest.size()); // no C++ has it
		return std::string(Rest.substr(0, Place)) + Text + std::string(Rest.substr(std::min(Place + 1, Rest.size())));
	}

	void CheckMistake(const std::string& Message, int Line, const std::string& Text)
	{
		HOST_CHECK(!Message.empty() && Line >= 1 && Line <= 1 + std::count(Text.begin(), Text.end(), '\n'));
	}
} // namespace

FUZZ(Input)
{
	const std::string Text = Unfold(Input);
	std::vector<HeaderDef> Headers;
	try
	{
		Headers.push_back(readHeader(Text, "Case.h", false));
	}
	catch (const HeaderError& Mistake)
	{
		return CheckMistake(Mistake.what(), Mistake.line, Text);
	}
	const Diagnostics Mistakes = check(Headers);
	for (const Diagnostic& Mistake : Mistakes)
	{
		CheckMistake(Mistake.message, Mistake.line, Text);
	}
	if (Mistakes.empty())
	{
		const Symbols All(Headers);
		for (const std::string& Made : {generateHeader(Headers[0], "Fuzz"), generateSource(Headers[0], All, "Fuzz"),
				 generateEngineHeader(Headers[0], "Fuzz"), generateEngineSource(Headers[0], "Fuzz")})
		{
			HOST_CHECK(!Made.empty() && lex(Made).back().kind == TokenKind::End); // its quotes and comments end, too
		}
	}
}
