#include "Parser.h"

#include "Directives.h"
#include "ParseParts.h"
#include "ScopeOpenings.h"

#include <fmt/format.h>

namespace HeaderTool
{
	namespace
	{
		/** What the declarations being read stand in. The pointers are set inside the body of a reflected type only. */
		struct Scope
		{
			std::string_view name; // for messages
			bool isFile = false;
			ClassDef* reflectedClass = nullptr;
			StructDef* reflectedStruct = nullptr;

			int* bodyLine() const
			{
				return reflectedClass ? &reflectedClass->bodyLine : reflectedStruct ? &reflectedStruct->bodyLine : nullptr;
			}
			std::vector<PropertyDef>* properties() const
			{
				return reflectedClass ? &reflectedClass->properties : reflectedStruct ? &reflectedStruct->properties : nullptr;
			}
		};

		class Parser
		{
		public:
			Parser(const std::vector<Token>& tokens, HeaderDef& inHeader, Diagnostics& inDiagnostics)
				: reader(tokens)
				, header(inHeader)
				, diagnostics(inDiagnostics)
			{
			}

			void run()
			{
				try
				{
					readFile();
				}
				catch (const NestingError& error)
				{
					report(error.line, fmt::format("scopes may not stand more than {} deep in one another", mostScopes));
				}
			}

		private:
			static constexpr int mostScopes = 256; // each takes a piece of the stack

			void readFile()
			{
				const Scope file{.name = "the file", .isFile = true};
				while (!reader.atEnd())
				{
					readScope(file);
					if (reader.isSymbol("}"))
					{
						report(reader.line(), "'}' without '{'");
						reader.next();
					}
				}
			}

			void report(int line, const std::string& message) { diagnostics.push_back({header.path, line, message}); }

			/** Reads declarations up to the closing brace or the end of the file. */
			void readScope(const Scope& scope)
			{
				if (++depth > mostScopes)
				{
					throw NestingError{reader.line()};
				}
				while (!reader.atEnd() && !reader.isSymbol("}"))
				{
					const size_t start = reader.place();
					try
					{
						readDeclaration(scope);
					}
					catch (const ParseError& error)
					{
						report(error.line, error.what());
						reader.recover(start);
					}
				}
				--depth;
			}

			void readDeclaration(const Scope& scope)
			{
				if (reader.isReflection())
				{
					readReflected(scope);
				}
				else if (isAccessLabel(reader))
				{
					reader.next();
					reader.next();
				}
				else if (reader.acceptWord("template"))
				{
					reader.skipAngles();
				}
				else if (stepIntoNamespace(reader))
				{
					readBraces({.name = "a namespace"});
				}
				else if (stepIntoClass(reader))
				{
					readBraces({.name = "another class"});
					reader.skipDeclaration(); // variables behind the brace
				}
				else
				{
					if (scope.reflectedClass)
					{
						noteConstruction(*scope.reflectedClass);
					}
					reader.skipDeclaration();
				}
			}

			/** The engine's tool adds a constructor and a destructor to a class that declares none. */
			void noteConstruction(ClassDef& def)
			{
				size_t bracket = 0;
				while (reader.peek(bracket).kind == TokenKind::Identifier || reader.isSymbol("~", bracket))
				{
					++bracket;
				}
				if (bracket > 0 && reader.isSymbol("(", bracket) && reader.isWord(def.name, bracket - 1))
				{
					const bool isDestructor = bracket > 1 && reader.isSymbol("~", bracket - 2);
					(isDestructor ? def.declaresDestructor : def.declaresConstructor) = true;
				}
			}

			void readBraces(const Scope& scope)
			{
				const int line = reader.line();
				reader.expectSymbol("{", fmt::format("at the beginning of {}", scope.name));
				readScope(scope);
				if (!reader.acceptSymbol("}"))
				{
					throw ParseError(line, "this brace is not closed");
				}
			}

			void readReflected(const Scope& scope)
			{
				const std::string macro = reader.peek().text;
				if (macro.starts_with("GENERATED_"))
				{
					readGeneratedBody(scope, false);
				}
				else if (macro == "UFUNCTION" || macro == "UPROPERTY")
				{
					readMember(scope, macro);
				}
				else if (macro == "UCLASS" || macro == "USTRUCT" || macro == "UENUM" || macro.starts_with("DECLARE_DYNAMIC_"))
				{
					readType(scope, macro);
				}
				else
				{
					reader.fail(fmt::format("{} is not read here", macro));
				}
			}

			void readType(const Scope& scope, const std::string& macro)
			{
				if (!scope.isFile)
				{
					reader.fail(fmt::format("{} stands inside {}; reflected types belong to the file itself", macro, scope.name));
				}
				if (macro == "UCLASS")
				{
					readClass();
				}
				else if (macro == "USTRUCT")
				{
					readStruct();
				}
				else
				{
					const size_t start = reader.place();
					macro == "UENUM" ? readEnum() : header.delegates.push_back(parseDelegate(reader));
					reader.requireNoDirectiveSince(start);
				}
			}

			/** Reads a macro with its arguments and what documents it. */
			Specifiers readMacro()
			{
				std::string comment = reader.next().comment;
				Specifiers specifiers = parseSpecifiers(reader);
				specifiers.comment = std::move(comment);
				return specifiers;
			}

			void readEnum()
			{
				Specifiers specifiers = readMacro();
				header.enums.push_back(parseEnum(reader));
				header.enums.back().specifiers = std::move(specifiers);
			}

			void readMember(const Scope& scope, const std::string& macro)
			{
				if (!scope.properties())
				{
					reader.fail(fmt::format("{} stands inside {}, which is not a reflected class", macro, scope.name));
				}
				if (macro == "UFUNCTION" && !scope.reflectedClass)
				{
					reader.fail(fmt::format("the struct {} may have no UFUNCTION", scope.name));
				}
				const size_t start = reader.place();
				Specifiers specifiers = readMacro();
				if (macro == "UFUNCTION")
				{
					FunctionDef function = parseFunction(reader);
					function.specifiers = std::move(specifiers);
					scope.reflectedClass->functions.push_back(std::move(function));
				}
				else
				{
					PropertyDef property = parseProperty(reader);
					property.specifiers = std::move(specifiers);
					scope.properties()->push_back(std::move(property));
				}
				reader.requireNoDirectiveSince(start);
			}

			void readGeneratedBody(const Scope& scope, bool isFirst)
			{
				const Token& macro = reader.next();
				int* const bodyLine = scope.bodyLine();
				if (macro.text != "GENERATED_BODY" || !bodyLine)
				{
					throw ParseError(macro.line, bodyLine ? fmt::format("{} is outdated, write GENERATED_BODY()", macro.text)
														  : fmt::format("{} stands inside {}", macro.text, scope.name));
				}
				if (*bodyLine != 0 || !isFirst)
				{
					report(macro.line, *bodyLine != 0 ? fmt::format("{} has a second GENERATED_BODY()", scope.name)
													  : fmt::format("GENERATED_BODY() must come first in the body of {}", scope.name));
				}
				*bodyLine = macro.line;
				reader.expectSymbol("(", "behind GENERATED_BODY");
				reader.expectSymbol(")", "behind GENERATED_BODY");
				reader.acceptSymbol(";");
			}

			/** @param start  the place of the macro before the type. */
			void readBody(const Scope& scope, size_t start, int line)
			{
				reader.requireNoDirectiveSince(start);
				if (reader.isSymbol("{") && reader.peek(1).text == "GENERATED_BODY")
				{
					reader.next();
					readGeneratedBody(scope, true);
					readScope(scope);
					reader.expectSymbol("}", fmt::format("at the end of {}", scope.name));
				}
				else
				{
					readBraces(scope);
				}
				reader.expectSymbol(";", fmt::format("after the body of {}", scope.name));
				if (*scope.bodyLine() == 0)
				{
					report(line, fmt::format("{} has no GENERATED_BODY()", scope.name));
				}
			}

			void readClass()
			{
				const size_t start = reader.place();
				ClassDef result;
				result.specifiers = readMacro();
				TypeHead head = parseTypeHead(reader, "class", "UCLASS");
				result.line = head.line;
				result.name = head.name;
				if (!head.bases.empty())
				{
					result.super = head.bases.front();
					result.otherBases.assign(head.bases.begin() + 1, head.bases.end());
				}
				readBody({.name = head.name, .reflectedClass = &result}, start, head.line);
				header.classes.push_back(std::move(result));
			}

			void readStruct()
			{
				const size_t start = reader.place();
				StructDef result;
				result.specifiers = readMacro();
				const TypeHead head = parseTypeHead(reader, "struct", "USTRUCT");
				result.line = head.line;
				result.name = head.name;
				result.super = head.bases.empty() ? "" : head.bases.front();
				readBody({.name = head.name, .reflectedStruct = &result}, start, head.line);
				header.structs.push_back(std::move(result));
			}

			TokenReader reader;
			HeaderDef& header;
			Diagnostics& diagnostics;
			int depth = 0; // of the scope being read
		};
	} // namespace

	void parse(const std::vector<Token>& tokens, HeaderDef& header, Diagnostics& diagnostics)
	{
		Parser(tokens, header, diagnostics).run();
	}
} // namespace HeaderTool
