#pragma once

#include "ScriptedHttp.h"

#include <string>
#include <vector>

/** The bytes that servers have, and get. */
inline const std::string fileContent = "abcdefghijkl";
inline const std::string eventContent = "id: 1\ndata: a\n\ndata: b\n\n";

/** The server of one run; how its answers end is open, until it has been asked twice. */
class Origin
{
public:
	/** @param inOther  how the first answer may end but for Whole, if inIsBrief; else all ends may be. */
	Origin(bool inIsBrief, Answer::End inOther)
		: isBrief(inIsBrief)
		, other(inOther)
	{
	}
	Answer answer(const Asked& asked);

	/** Whether a body that holds something has come whole. */
	bool has(const std::string& bytes) const;
	/** Of the resumable upload. */
	std::string stored;
	/** Asked for so far. */
	std::vector<std::string> paths;
	/** Requests that may run at the same time. */
	std::size_t mostAtOnce = 2;

private:
	Answer file(const Asked& asked) const;
	Answer resumable(const Asked& asked);
	Answer::End chooseEnd(bool hasBody) const;

	const bool isBrief;
	const Answer::End other;
	std::vector<std::string> bodies;
};
