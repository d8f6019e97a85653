#include "Parser.h"

namespace HeaderTool
{
	namespace
	{
		struct Condition
		{
			int line;
			std::string text; // "#if WITH_EDITOR"
			bool isEditor;
		};

		/** "include", "if", ... and what follows it. */
		std::pair<std::string_view, std::string_view> splitDirective(std::string_view text)
		{
			const size_t end = std::min(text.find_first_of(" \t<\"("), text.size());
			const std::string_view rest = text.substr(end);
			return {text.substr(0, end), rest.substr(std::min(rest.find_first_not_of(" \t"), rest.size()))};
		}

		void readDirective(const Token& token, HeaderDef& header, std::vector<Condition>& conditions)
		{
			const auto [name, rest] = splitDirective(token.text);
			if (name == "include")
			{
				const size_t end = rest.find_first_of(">\"", 1);
				header.includes.push_back({end == rest.npos ? "" : std::string(rest.substr(1, end - 1)), token.line});
			}
			else if (name.starts_with("if"))
			{
				const bool isEditor = name == "if" && (rest == "WITH_EDITOR" || rest == "WITH_EDITORONLY_DATA");
				conditions.push_back({token.line, "#" + token.text, isEditor});
			}
			else if (!conditions.empty() && name == "endif")
			{
				conditions.pop_back();
			}
			else if (!conditions.empty() && name.starts_with("el"))
			{
				conditions.back() = {token.line, "#" + token.text, false}; // "not in the editor" is no condition the engine reads
			}
		}

		void refuseReflection(const Token& token, const std::vector<Condition>& conditions)
		{
			const auto barrier = std::find_if(conditions.begin(), conditions.end(), [](const Condition& c) { return !c.isEditor; });
			if (barrier != conditions.end() && isReflectionMacro(token))
			{
				fail(token.line, "{} stands inside '{}' of line {}; only WITH_EDITOR and WITH_EDITORONLY_DATA may enclose it", token.text,
					barrier->text, barrier->line);
			}
		}
	} // namespace

	std::vector<Token> takeDirectives(std::vector<Token> tokens, HeaderDef& header)
	{
		using Words = std::pair<std::string_view, std::string_view>;
		const Token& first = tokens.front();
		header.startsWithPragmaOnce = first.kind == TokenKind::Directive && splitDirective(first.text) == Words("pragma", "once");
		std::vector<Condition> conditions;
		std::vector<Token> kept;
		int region = 0;
		for (Token& token : tokens)
		{
			refuseReflection(token, conditions);
			token.region = region;
			if (token.kind == TokenKind::Directive)
			{
				readDirective(token, header, conditions);
				++region;
			}
			else if (conditions.empty() || token.kind == TokenKind::End)
			{
				kept.push_back(std::move(token));
			}
		}
		return kept;
	}
} // namespace HeaderTool
