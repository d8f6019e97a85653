#include "FilePaths.h"

#include "InputError.h"
#include "ValueTransfer.h"

#include <filesystem>
#include <fmt/format.h>

namespace Program
{
	namespace
	{
		namespace fs = std::filesystem;
		using Reflect::InputError;

		/** What cannot be resolved stays as it is: whoever opens it learns why. */
		fs::path resolved(const fs::path& path)
		{
			std::error_code fault;
			const fs::path full = fs::weakly_canonical(path, fault);
			return fault ? path : full;
		}

		/** @param path  as people know it, for the message. */
		std::string asModulesRead(const fs::path& full, const std::string& path)
		{
			const std::string text = full.string();
			if (text.find('\\') != text.npos)
			{
				throw InputError(fmt::format("'{}' lies at '{}': a path with a backslash cannot be used", path, text));
			}
			return Reflect::toUtf8(Reflect::toFString(text));
		}
	} // namespace

	std::string sourcePath(const std::string& path)
	{
		const fs::path full = fs::absolute(path);
		return asModulesRead(resolved(full.parent_path()) / full.filename(), path);
	}

	std::string targetPath(const std::string& path)
	{
		const std::string target = asModulesRead(resolved(fs::absolute(path)), path);
		std::error_code unknown;
		const fs::file_status there = fs::symlink_status(target, unknown); // a link that is left here leads nowhere
		if (fs::exists(there) && !fs::is_regular_file(there) && !fs::is_directory(there)) // a folder has an outcome of its own
		{
			throw InputError(fmt::format("'{}' is there, and no file: it is not replaced by one", path));
		}
		return target;
	}
} // namespace Program
