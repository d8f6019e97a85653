#include "FileKit.h"

#include "ModuleFixture.h"

#include <array>
#include <cstdio>

namespace
{
	/** @return what a function tells of its success. */
	template <class Function>
	bool succeeds(Function function)
	{
		bool success = false;
		function(success);
		return success;
	}
} // namespace

TArray<uint8> toArray(std::string_view bytes)
{
	TArray<uint8> array;
	array.Append(reinterpret_cast<const uint8*>(bytes.data()), static_cast<int32>(bytes.size()));
	return array;
}

std::string outputOf(const std::string& command)
{
	std::FILE* const pipe = popen(command.c_str(), "r");
	std::string output;
	std::array<char, 4096> bytes{};
	while (const size_t number = pipe ? std::fread(bytes.data(), 1, bytes.size(), pipe) : 0)
	{
		output.append(bytes.data(), number);
	}
	EXPECT_TRUE(pipe && pclose(pipe) == 0) << command;
	return output;
}

std::optional<std::string> FileTest::read(const std::string& path, int64 seek)
{
	TArray<uint8> bytes;
	const bool bRead = succeeds([&](bool& success) { bytes = Files::readBytesFromFile(EKind::E_ad, text(path), seek, success); });
	EXPECT_TRUE(bRead || bytes.IsEmpty());
	return bRead ? std::optional(bytesOf(bytes)) : std::nullopt;
}

std::optional<std::string> FileTest::textBy(Reader reader, const std::string& path)
{
	FString result = "old";
	const bool bRead = succeeds([&](bool& success) { reader(EKind::E_ad, text(path), success, result); });
	EXPECT_TRUE(bRead || result.IsEmpty());
	return bRead ? std::optional(utf8(result)) : std::nullopt;
}

bool FileTest::write(const std::string& path, std::string_view bytes)
{
	return succeeds([&](bool& success) { Files::writeBytesToFile(EKind::E_ad, text(path), toArray(bytes), success); });
}

bool FileTest::writeText(const std::string& path, std::string_view utf8)
{
	return succeeds([&](bool& success) { Files::writeStringToFile(EKind::E_ad, text(utf8), text(path), success); });
}

bool FileTest::add(const std::string& path, std::string_view bytes)
{
	return succeeds([&](bool& success) { Files::addBytesToFile(EKind::E_ad, text(path), toArray(bytes), success); });
}

std::vector<std::string> FileTest::noFiles() const
{
	return {dir.path(), dir.path() + "/", dir.path("file/"), dir.path("file/below"), dir.path(std::string(256, 'x')), "/", ""};
}
