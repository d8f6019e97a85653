#include "SharedFiles.h"

#include <fmt/format.h>
#include <stdexcept>

namespace Program
{
	namespace fs = std::filesystem;

	fs::path sharedFolder(const std::string& name)
	{
		const fs::path folder = fs::read_symlink("/proc/self/exe").parent_path() / CORVANE_SHARED_FILES / name;
		if (!fs::is_directory(folder))
		{
			throw std::runtime_error(fmt::format("'{}' is missing, install the command anew", folder.lexically_normal().string()));
		}
		return folder.lexically_normal();
	}
} // namespace Program
