#pragma once

#include "TransferRate.h"

#include <list>
#include <string>
#include <vector>

namespace Program
{
	/**
	 * Tells on a terminal how several transfers go on, while it lives: a line for each that runs and one for all, drawn again and
	 * again in the same place. Where standard error is no terminal, it tells nothing. Thread: game thread.
	 */
	class ProgressTable
	{
	public:
		/** One that runs. */
		struct Row
		{
			std::string name;
			double size = -1; // bytes; -1 = nobody knows
			double done = 0;
			TransferRate rate = {};
		};

		ProgressTable();
		~ProgressTable(); // leaves nothing behind
		ProgressTable(const ProgressTable&) = delete;
		ProgressTable& operator=(const ProgressTable&) = delete;

		/** @return a row that is shown from now on until drop. */
		Row& add(const std::string& name);
		void drop(const Row& row);

		/** What all together are at. */
		struct Sum
		{
			size_t files;
			size_t ended;
			double size; // bytes; -1 = nobody knows
			double done;
		};

		/** Draws it anew; ten times a second are enough. */
		void tell(const Sum& sum);

	private:
		const bool isShown;
		std::list<Row> rows;
		TransferRate rate; // of all
	};
} // namespace Program
