#pragma once

#include <openssl/evp.h>

#include <array>
#include <memory>
#include <string>
#include <string_view>

namespace Lab
{
	/** The MD5 sum of bytes that come one after another. Thread: one at a time. */
	class Md5
	{
	public:
		Md5() { EVP_DigestInit_ex(context.get(), EVP_md5(), nullptr); }

		void add(std::string_view bytes) { EVP_DigestUpdate(context.get(), bytes.data(), bytes.size()); }
		/** @return the sum in lower case; once. */
		std::string hex()
		{
			constexpr std::string_view digits = "0123456789abcdef";
			std::array<unsigned char, EVP_MAX_MD_SIZE> sum{};
			unsigned size = 0;
			EVP_DigestFinal_ex(context.get(), sum.data(), &size);
			std::string text;
			for (unsigned index = 0; index < size; ++index)
			{
				text += digits[sum[index] >> 4];
				text += digits[sum[index] & 15];
			}
			return text;
		}

	private:
		std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context{EVP_MD_CTX_new(), EVP_MD_CTX_free};
	};
} // namespace Lab
