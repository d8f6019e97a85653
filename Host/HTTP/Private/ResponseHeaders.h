#pragma once

#include "CoreTypes.h"

#include <string>
#include <string_view>

/** The header block of one answer, collected line by line. Not changed any more once it belongs to a response. */
class FResponseHeaders
{
public:
	/** Takes the next line of the block with its line end; a status line begins a new block. */
	void AddLine(std::string_view Line);
	void Clear();

	/** 0 when no status line arrived or it is malformed. */
	int32 StatusCode() const { return Code; }
	/** @return the values of all headers of this name (case ignored), joined by ", "; empty when absent. */
	std::string Find(std::string_view Name) const;
	/** @return the Content-Length header, 0 when there is none. */
	uint64 ContentLength() const;
	/** Whether several Content-Length headers contradict each other, so that nobody can tell where the body ends. */
	bool HasContradictingLengths() const;

	/** Calls Visit(name, value) for every header in the order of the wire. */
	template <class Visitor>
	void ForEach(Visitor Visit) const
	{
		std::string_view Rest = Lines;
		while (!Rest.empty())
		{
			const std::string_view Line = Rest.substr(0, Rest.find('\n'));
			const size_t Colon = Line.find(':');
			Visit(Line.substr(0, Colon), Line.substr(Colon + 1));
			Rest.remove_prefix(Line.size() + 1);
		}
	}

private:
	std::string Lines; // "Name:value\n" each, blanks around both cut
	int32 Code = 0;
};
