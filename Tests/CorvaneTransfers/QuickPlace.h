#pragma once

#include <filesystem>

/** @return a folder in memory where there is such a place: thousands of files come and go in some tests. */
inline std::filesystem::path quickPlace()
{
	std::error_code missing;
	return std::filesystem::is_directory("/dev/shm", missing) ? "/dev/shm" : std::filesystem::temp_directory_path();
}
