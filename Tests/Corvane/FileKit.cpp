#include "FileKit.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <gtest/gtest.h>
#include <sys/resource.h>

TArray<uint8> toArray(std::string_view bytes)
{
	TArray<uint8> array;
	array.Append(reinterpret_cast<const uint8*>(bytes.data()), static_cast<int32>(bytes.size()));
	return array;
}

std::string toBytes(const TArray<uint8>& array)
{
	return std::string(array.begin(), array.end());
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

FileSizeLimit::FileSizeLimit(unsigned long bytes)
	: handlerBefore(std::signal(SIGXFSZ, SIG_IGN))
{
	rlimit limit{};
	getrlimit(RLIMIT_FSIZE, &limit);
	limitBefore = limit.rlim_cur;
	limit.rlim_cur = bytes;
	setrlimit(RLIMIT_FSIZE, &limit);
}

FileSizeLimit::~FileSizeLimit()
{
	rlimit limit{};
	getrlimit(RLIMIT_FSIZE, &limit);
	limit.rlim_cur = limitBefore;
	setrlimit(RLIMIT_FSIZE, &limit);
	std::signal(SIGXFSZ, handlerBefore);
}
