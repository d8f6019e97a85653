#pragma once

#include "FileFunctionsCorv.h"
#include "FileSizeLimit.h"
#include "TempDir.h"
#include "TextSupport.h"

#include <gtest/gtest.h>
#include <optional>
#include <vector>

using EKind = EFileFunctionsCorvDirectoryType;
using Files = UFileFunctionsCorv;

TArray<uint8> toArray(std::string_view bytes);

/** @return what a shell command prints; a command that fails, fails the test. */
std::string outputOf(const std::string& command);

/** The functions that read and write, on absolute paths. Nothing, or false, when they tell a failure. */
class FileTest : public testing::Test
{
protected:
	static std::optional<std::string> read(const std::string& path, int64 seek = 0);
	static std::optional<std::string> readText(const std::string& path) { return textBy(Files::readStringFromFile, path); }
	static std::optional<std::string> md5(const std::string& path) { return textBy(Files::getMD5FromFile, path); }
	static bool write(const std::string& path, std::string_view bytes);
	static bool writeText(const std::string& path, std::string_view utf8);
	static bool add(const std::string& path, std::string_view bytes);

	/** Paths that are no files, whatever is done with them. */
	std::vector<std::string> noFiles() const;

	const TempDir dir;
	const std::string file = dir.write("file", "x");

private:
	using Reader = void (*)(EKind kind, FString path, bool& success, FString& result);
	static std::optional<std::string> textBy(Reader reader, const std::string& path);
};
