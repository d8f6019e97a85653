#include "AddressList.h"

#include "AddressFault.h"
#include "InputError.h"

#include <filesystem>
#include <fmt/format.h>
#include <sstream>

namespace Program
{
	namespace
	{
		constexpr const char* blanksInLine = " \t\r";

		std::string trimmedLine(const std::string& text)
		{
			const size_t first = text.find_first_not_of(blanksInLine);
			return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(blanksInLine) + 1 - first);
		}

		/** @return what is wrong with a name; empty = nothing. */
		std::string fileFault(const std::string& name)
		{
			const std::filesystem::path path = std::filesystem::path(name).lexically_normal();
			const bool isBelow = name.empty() || (path.is_relative() && *path.begin() != ".." && path.has_filename() && path != ".");
			return isBelow && name.find('\\') == name.npos ? "" : fmt::format("'{}' is no file below the folder", name);
		}
	} // namespace

	std::vector<ListedAddress> readAddressList(const std::string& text, const std::string& name)
	{
		constexpr std::string_view mark = "\xef\xbb\xbf"; // of UTF-8, which some editors write
		std::vector<ListedAddress> all;
		std::istringstream lines(text.substr(text.starts_with(mark) ? mark.size() : 0));
		std::string line;
		for (int number = 1; std::getline(lines, line); ++number)
		{
			line = trimmedLine(line);
			if (line.empty() || line.starts_with('#'))
			{
				continue;
			}
			const size_t end = std::min(line.find_first_of(blanksInLine), line.size());
			const ListedAddress listed = {line.substr(0, end), trimmedLine(line.substr(end))};
			const std::string fault = addressFault(listed.address);
			if (const std::string first = fault.empty() ? fileFault(listed.file) : fault; !first.empty())
			{
				throw Reflect::InputError(fmt::format("{}:{}: {}", name, number, first));
			}
			all.push_back(listed);
		}
		return all;
	}
} // namespace Program
