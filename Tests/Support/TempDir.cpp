#include "TempDir.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <stdexcept>

TempDir::TempDir()
{
	std::string pattern = (std::filesystem::temp_directory_path() / "corvane-test-XXXXXX").string();
	if (!mkdtemp(pattern.data()))
	{
		throw std::runtime_error("cannot make a temporary directory");
	}
	Root = pattern;
}

TempDir::~TempDir()
{
	std::error_code ignored;
	std::filesystem::remove_all(Root, ignored);
}

std::string TempDir::path(std::string_view name) const
{
	return name.empty() ? Root.string() : (Root / name).string();
}

std::string TempDir::write(std::string_view name, std::string_view bytes) const
{
	const std::filesystem::path file = Root / name;
	std::filesystem::create_directories(file.parent_path());
	std::ofstream stream(file, std::ios::binary | std::ios::trunc);
	stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
	EXPECT_TRUE(stream.flush()) << file;
	return file.string();
}

std::string TempDir::read(std::string_view name) const
{
	std::ifstream stream(Root / name, std::ios::binary);
	EXPECT_TRUE(stream.is_open()) << name << " is missing";
	return std::string(std::istreambuf_iterator<char>(stream), {});
}
