#pragma once

#include "TokenReader.h"

/** How declarations begin that hold other declarations. Nothing here throws. */
namespace HeaderTool
{
	/** @return whether `public:` or one of its kind comes next. */
	bool isAccessLabel(const TokenReader& reader);

	/** @return whether a namespace or a linkage block begins here; the reader then stands at its brace. */
	bool stepIntoNamespace(TokenReader& reader);

	/** @return whether the body of a class, struct or union begins with this declaration; the reader then stands at its brace. */
	bool stepIntoClass(TokenReader& reader);
} // namespace HeaderTool
