#include "LargeFile.h"

#include "RandomBytes.h"

#include <array>
#include <fmt/ranges.h>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <openssl/evp.h>

void writeLargeFile(const std::string& path, std::uintmax_t size)
{
	std::string block = randomBytes(1 << 20);
	std::ofstream stream(path, std::ios::binary);
	for (std::uintmax_t done = 0; done < size; done += block.size())
	{
		block.replace(0, sizeof done, reinterpret_cast<const char*>(&done), sizeof done);
		stream.write(block.data(), static_cast<std::streamsize>(std::min<std::uintmax_t>(block.size(), size - done)));
	}
	EXPECT_TRUE(stream.flush()) << path;
}

std::string sha256Of(const std::string& path)
{
	const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
	EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr);
	std::string block(1 << 20, '\0');
	for (std::ifstream stream(path, std::ios::binary); stream;)
	{
		stream.read(block.data(), static_cast<std::streamsize>(block.size()));
		EVP_DigestUpdate(context.get(), block.data(), static_cast<size_t>(stream.gcount()));
	}
	std::array<unsigned char, EVP_MAX_MD_SIZE> sum{};
	unsigned size = 0;
	EVP_DigestFinal_ex(context.get(), sum.data(), &size);
	return fmt::format("{:02x}", fmt::join(sum.begin(), sum.begin() + size, ""));
}
