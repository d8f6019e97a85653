#pragma once

#include <string>
#include <vector>

namespace Program
{
	/** The files that downloads write at the moment when this is made. Thread: game thread. */
	class UnfinishedFiles
	{
	public:
		UnfinishedFiles();

		/** @return full paths. */
		const std::vector<std::string>& paths() const { return files; }
		/** @return how much each of them holds by now, and how its download goes on; empty when there is nothing to keep. */
		std::string inWords() const;

	private:
		std::vector<std::string> files;
	};
} // namespace Program
