#include "Parser.h"

#include "Text.h"

#include <filesystem>

namespace HeaderTool
{
	namespace
	{
		class Parser
		{
		public:
			Parser(const std::vector<Token>& tokens, HeaderDef& inHeader)
				: reader(tokens)
				, header(inHeader)
			{
			}

			void run()
			{
				while (!reader.atEnd())
				{
					if (reader.isReflection())
					{
						readType();
					}
					else if (reader.is("}"))
					{
						fail(reader.line(), "'}}' without '{{'");
					}
					else
					{
						reader.skipDeclaration();
					}
				}
			}

		private:
			void readType()
			{
				const std::string& macro = reader.peek().text;
				if (macro == "UCLASS")
				{
					header.classes.push_back(readClass("class"));
				}
				else if (macro == "USTRUCT")
				{
					header.structs.push_back(readClass("struct"));
				}
				else if (macro == "UENUM")
				{
					readEnum();
				}
				else if (macro.starts_with("DECLARE_"))
				{
					const size_t start = reader.place();
					header.delegates.push_back(parseDelegate(reader));
					reader.requireNoDirectiveSince(start);
				}
				else
				{
					reader.failMisplaced();
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
				const size_t start = reader.place();
				Specifiers specifiers = readMacro();
				header.enums.push_back(parseEnum(reader));
				header.enums.back().specifiers = std::move(specifiers);
				reader.requireNoDirectiveSince(start);
			}

			ClassDef readClass(std::string_view keyword)
			{
				const size_t start = reader.place();
				Specifiers specifiers = readMacro();
				ClassDef def = parseTypeHead(reader, keyword);
				def.specifiers = std::move(specifiers);
				def.includeName = header.includeName;
				reader.expect("{", "at the beginning of " + def.name);
				reader.requireNoDirectiveSince(start);
				def.bodyLine = reader.line();
				reader.expect("GENERATED_BODY", "at the beginning of " + def.name);
				reader.expect("(", "after GENERATED_BODY");
				reader.expect(")", "after GENERATED_BODY");
				while (!reader.atEnd() && !reader.is("}"))
				{
					readMember(def, keyword == "struct");
				}
				reader.expect("}", "at the end of " + def.name);
				reader.expect(";", "after the body of " + def.name);
				return def;
			}

			void readMember(ClassDef& owner, bool isStruct)
			{
				if (reader.isReflection())
				{
					readReflected(owner, isStruct);
				}
				else if ((reader.is("public") || reader.is("protected") || reader.is("private")) && reader.is(":", 1))
				{
					reader.next();
					reader.next();
				}
				else
				{
					noteConstruction(owner);
					reader.skipDeclaration();
				}
			}

			void readReflected(ClassDef& owner, bool isStruct)
			{
				const size_t start = reader.place();
				if (reader.is("UFUNCTION") && !isStruct)
				{
					Specifiers specifiers = readMacro();
					owner.functions.push_back(parseFunction(reader));
					owner.functions.back().specifiers = std::move(specifiers);
				}
				else if (reader.is("UPROPERTY"))
				{
					Specifiers specifiers = readMacro();
					owner.properties.push_back(parseProperty(reader));
					owner.properties.back().specifiers = std::move(specifiers);
				}
				else
				{
					reader.failMisplaced();
				}
				reader.requireNoDirectiveSince(start);
			}

			/** The engine's tool adds a constructor and a destructor to a class that declares none. */
			void noteConstruction(ClassDef& def) const
			{
				size_t bracket = 0;
				while (reader.peek(bracket).kind == TokenKind::Identifier || reader.is("~", bracket))
				{
					++bracket;
				}
				if (bracket > 0 && reader.is("(", bracket) && reader.is(def.name, bracket - 1))
				{
					const bool isDestructor = bracket > 1 && reader.is("~", bracket - 2);
					(isDestructor ? def.declaresDestructor : def.declaresConstructor) = true;
				}
			}

			TokenReader reader;
			HeaderDef& header;
		};

		std::string includeNameOf(const std::filesystem::path& path)
		{
			std::filesystem::path below = path.filename();
			for (std::filesystem::path folder = path.parent_path(); folder.has_filename(); folder = folder.parent_path())
			{
				if (folder.filename() == "Public")
				{
					return below.generic_string();
				}
				below = folder.filename() / below;
			}
			return path.filename().generic_string();
		}
	} // namespace

	HeaderDef readHeader(std::string_view text, const std::string& path, bool isReference)
	{
		if (const size_t place = findNonUtf8(text); place < text.size())
		{
			const auto before = text.substr(0, place);
			fail(1 + static_cast<int>(std::count(before.begin(), before.end(), '\n')), "a byte on this line is no UTF-8");
		}
		HeaderDef header;
		header.path = path;
		header.fileName = std::filesystem::path(path).filename().string();
		header.includeName = includeNameOf(path);
		header.isReference = isReference;
		const std::vector<Token> tokens = takeDirectives(lex(text), header);
		Parser(tokens, header).run();
		return header;
	}
} // namespace HeaderTool
