#include "Directives.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

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

		class DirectiveReader
		{
		public:
			DirectiveReader(HeaderDef& inHeader, Diagnostics& inDiagnostics)
				: header(inHeader)
				, diagnostics(inDiagnostics)
			{
			}

			void readDirective(const Token& token)
			{
				const auto [name, rest] = splitDirective(token.text);
				if (name == "include")
				{
					header.includes.push_back({fileOf(rest), token.line, !conditions.empty()});
				}
				else if (name.starts_with("if"))
				{
					const bool isEditor = name == "if" && (rest == "WITH_EDITOR" || rest == "WITH_EDITORONLY_DATA");
					conditions.push_back({token.line, "#" + token.text, isEditor});
				}
				else if (name == "else" || name == "elif" || name == "endif")
				{
					leaveBranch(token, name == "endif");
				}
			}

			/** @return whether the parser gets to see the token. */
			bool keeps(const Token& token)
			{
				if (conditions.empty() || token.kind == TokenKind::End)
				{
					return true;
				}
				const auto barrier = std::find_if(conditions.begin(), conditions.end(), [](const Condition& c) { return !c.isEditor; });
				if (barrier != conditions.end() && token.kind == TokenKind::Identifier && isReflectionMacro(token.text))
				{
					report(token.line,
						fmt::format("{} stands inside '{}' of line {}; only WITH_EDITOR and WITH_EDITORONLY_DATA may enclose it",
							token.text, barrier->text, barrier->line));
				}
				return false;
			}

			void finish()
			{
				for (const Condition& condition : conditions)
				{
					report(condition.line, fmt::format("'{}' has no #endif", condition.text));
				}
			}

		private:
			void report(int line, std::string message) { diagnostics.push_back({header.path, line, std::move(message)}); }

			static std::string fileOf(std::string_view operand)
			{
				const size_t end = operand.find_first_of(">\"", 1);
				return end == std::string_view::npos ? std::string() : std::string(operand.substr(1, end - 1));
			}

			void leaveBranch(const Token& token, bool isLast)
			{
				if (conditions.empty())
				{
					report(token.line, fmt::format("#{} without #if", token.text));
				}
				else if (isLast)
				{
					conditions.pop_back();
				}
				else
				{
					conditions.back() = {token.line, "#" + token.text, false}; // "not in the editor" is no condition the engine reads
				}
			}

			HeaderDef& header;
			Diagnostics& diagnostics;
			std::vector<Condition> conditions;
		};
	} // namespace

	bool isReflectionMacro(std::string_view word)
	{
		constexpr std::array<std::string_view, 9> names = {
			"UCLASS", "USTRUCT", "UENUM", "UFUNCTION", "UPROPERTY", "UPARAM", "UMETA", "UINTERFACE", "UDELEGATE"};
		return word.starts_with("DECLARE_DYNAMIC_") || (word.starts_with("GENERATED_") && word.ends_with("BODY")) ||
			   std::find(names.begin(), names.end(), word) != names.end();
	}

	std::vector<Token> takeDirectives(std::vector<Token> tokens, HeaderDef& header, Diagnostics& diagnostics)
	{
		header.startsWithPragmaOnce =
			tokens.front().kind == TokenKind::Directive &&
			splitDirective(tokens.front().text) == std::pair<std::string_view, std::string_view>("pragma", "once");
		DirectiveReader reader(header, diagnostics);
		std::vector<Token> kept;
		int region = 0;
		for (Token& token : tokens)
		{
			if (token.kind == TokenKind::Directive)
			{
				reader.readDirective(token);
				++region;
			}
			else if (reader.keeps(token))
			{
				token.region = region;
				kept.push_back(std::move(token));
			}
		}
		reader.finish();
		return kept;
	}
} // namespace HeaderTool
