#include "UnfinishedFiles.h"

#include "CorvaneBPLibrary.h"
#include "ValueTransfer.h"

#include <filesystem>
#include <fmt/format.h>

namespace Program
{
	UnfinishedFiles::UnfinishedFiles()
	{
		for (const FString& path : UCorvaneBPLibrary::filesOfRunningDownloads())
		{
			files.push_back(Reflect::toUtf8(path));
		}
	}

	std::string UnfinishedFiles::inWords() const
	{
		constexpr int mostFiles = 3; // a line is to be read
		int kept = 0;
		std::string words;
		for (const std::string& path : files)
		{
			std::error_code missing;
			const auto size = std::filesystem::file_size(path, missing);
			if (!missing && size > 0 && ++kept <= mostFiles)
			{
				words += fmt::format("{}{} bytes in '{}'", kept == 1 ? "; kept " : ", ", size, path);
			}
		}
		if (kept == 0)
		{
			return "";
		}
		const std::string rest = kept > mostFiles ? fmt::format(" and {} files more", kept - mostFiles) : "";
		return fmt::format("{}{}; the same download with ActionIfFileExists=E_RESUME goes on", words, rest);
	}
} // namespace Program
