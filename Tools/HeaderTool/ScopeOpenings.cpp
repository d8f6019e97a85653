#include "ScopeOpenings.h"

namespace HeaderTool
{
	namespace
	{
		bool stepToBrace(TokenReader& reader, size_t ahead)
		{
			const bool isThere = reader.isSymbol("{", ahead);
			for (; isThere && ahead > 0; --ahead)
			{
				reader.next();
			}
			return isThere;
		}
	} // namespace

	bool isAccessLabel(const TokenReader& reader)
	{
		return (reader.isWord("public") || reader.isWord("protected") || reader.isWord("private")) && reader.isSymbol(":", 1);
	}

	bool stepIntoNamespace(TokenReader& reader)
	{
		size_t ahead = reader.isWord("inline") ? 1 : 0;
		if (!reader.isWord("namespace", ahead) && !(reader.isWord("extern") && reader.peek(1).kind == TokenKind::String))
		{
			return false;
		}
		const size_t first = ahead;
		while (!reader.isSymbol("{", ahead) && !reader.isSymbol(";", ahead) && reader.peek(ahead).kind != TokenKind::End &&
			   !reader.isSymbol("(", ahead))
		{
			++ahead;
		}
		return ahead > first && stepToBrace(reader, ahead);
	}

	bool stepIntoClass(TokenReader& reader)
	{
		if (!reader.isWord("class") && !reader.isWord("struct") && !reader.isWord("union"))
		{
			return false;
		}
		size_t ahead = 1;
		for (; !reader.isSymbol("{", ahead); ++ahead)
		{
			const bool isOther = reader.isSymbol(";", ahead) || reader.isSymbol("=", ahead) || reader.isSymbol("(", ahead);
			if (isOther && !reader.isWord("alignas", ahead - 1))
			{
				return false;
			}
			if (reader.peek(ahead).kind == TokenKind::End)
			{
				return false;
			}
		}
		return stepToBrace(reader, ahead);
	}
} // namespace HeaderTool
