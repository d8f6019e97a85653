#pragma once

#include "CoreTypes.h"

#include <map>
#include <string>
#include <vector>

namespace Script
{
	/**
	 * What a script has most likely forgotten. A place is text such as "Library.function at script.lua:7". Thread: game
	 * thread.
	 */
	class Omissions
	{
	public:
		/** Notes that a function has made a record. @return its number, for noteStarted(). */
		uint64 noteBuilt(const std::string& place);
		/** Notes that a record went to a function that does not only hand it on. */
		void noteStarted(uint64 number) { unstarted.erase(number); }
		/** Notes that a node has failed and nobody was told. @param place  where it was made. */
		void noteUnheardFailure(const std::string& place);

		/** @return a line for each kind of omission that there was. */
		std::vector<std::string> describe() const;

	private:
		std::map<uint64, std::string> unstarted; // number of a record to its place
		uint64 lastNumber = 0;
		size_t unheardFailures = 0;
		std::string firstUnheard;
	};
} // namespace Script
