#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

/** A new empty directory that goes with all its content at the end of the scope. */
class TempDir
{
public:
	explicit TempDir(const std::filesystem::path& parent = std::filesystem::temp_directory_path())
	{
		std::string pattern = (parent / "corvane-test-XXXXXX").string();
		if (!mkdtemp(pattern.data()))
		{
			throw std::runtime_error("cannot make a temporary directory");
		}
		Root = pattern;
	}
	~TempDir()
	{
		std::error_code ignored;
		std::filesystem::remove_all(Root, ignored);
	}
	TempDir(const TempDir&) = delete;
	TempDir& operator=(const TempDir&) = delete;

	/** @param name  relative to the directory; empty = the directory itself. @return an absolute path. */
	std::string path(std::string_view name = "") const { return name.empty() ? Root.string() : (Root / name).string(); }

	/** Makes or replaces a file; missing directories are made. @return its path. */
	std::string write(std::string_view name, std::string_view bytes) const
	{
		const std::filesystem::path file = Root / name;
		std::filesystem::create_directories(file.parent_path());
		std::ofstream stream(file, std::ios::binary | std::ios::trunc);
		stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
		EXPECT_TRUE(stream.flush()) << file;
		return file.string();
	}
	/** @return the bytes of a file; a missing file fails the test. */
	std::string read(std::string_view name) const
	{
		std::ifstream stream(Root / name, std::ios::binary);
		EXPECT_TRUE(stream.is_open()) << name << " is missing";
		return std::string(std::istreambuf_iterator<char>(stream), {});
	}
	bool exists(std::string_view name) const { return std::filesystem::exists(path(name)); }

private:
	std::filesystem::path Root;
};
