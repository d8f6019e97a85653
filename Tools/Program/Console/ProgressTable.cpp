#include "ProgressTable.h"

#include "Console.h"

#include <algorithm>
#include <fmt/format.h>

namespace Program
{
	namespace
	{
		constexpr size_t widestName = 40;

		/** @return "  45 %" or, when nobody knows the size, as many blanks. */
		std::string percent(double done, double size)
		{
			return size > 0 ? fmt::format("{:3.0f} %", std::min(100 * done / size, 100.0)) : "     ";
		}

		std::string amount(double done, double size)
		{
			return size >= 0 ? fmt::format("{} of {}", sizeInWords(std::min(done, size)), sizeInWords(size)) : sizeInWords(done);
		}

		double left(double done, double size)
		{
			return size < 0 ? -1 : std::max(size - done, 0.0);
		}

		std::string lineOf(const ProgressTable::Row& row)
		{
			return fmt::format("{} {}: {}{}", percent(row.done, row.size), cutTo(withoutControls(row.name), widestName),
				amount(row.done, row.size), row.rate.inWords(left(row.done, row.size)));
		}

		std::string lineOf(const ProgressTable::Sum& sum, const TransferRate& rate)
		{
			return fmt::format("{} {} of {} files: {}{}", percent(sum.done, sum.size), sum.ended, sum.files, amount(sum.done, sum.size),
				rate.inWords(left(sum.done, sum.size)));
		}
	} // namespace

	ProgressTable::ProgressTable()
		: isShown(isTerminal(stderr))
	{
	}

	ProgressTable::~ProgressTable()
	{
		if (isShown)
		{
			drawStatus(std::vector<std::string>());
		}
	}

	ProgressTable::Row& ProgressTable::add(const std::string& name)
	{
		return rows.emplace_back(Row{name});
	}

	void ProgressTable::drop(const Row& row)
	{
		rows.remove_if([&row](const Row& each) { return &each == &row; });
	}

	void ProgressTable::tell(const Sum& sum)
	{
		rate.note(sum.done);
		if (!isShown)
		{
			return;
		}
		std::vector<std::string> lines;
		for (const Row& row : rows)
		{
			lines.push_back(lineOf(row));
		}
		const size_t room = std::max<size_t>(terminalSize().rows, 3) - 2; // the last line, and the one that the shell is left
		lines.resize(std::min(lines.size(), room));
		lines.push_back(lineOf(sum, rate));
		drawStatus(lines);
	}
} // namespace Program
