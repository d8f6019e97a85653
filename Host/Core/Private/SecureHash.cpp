#include "Misc/SecureHash.h"

#include <algorithm>
#include <iterator>
#include <openssl/evp.h>

namespace
{
	/** One hash under way, of whichever kind. */
	class FDigest
	{
	public:
		explicit FDigest(const EVP_MD* Kind) { HOST_CHECK(EVP_DigestInit_ex(Context, Kind, nullptr) == 1); }
		~FDigest() { EVP_MD_CTX_free(Context); }
		FDigest(const FDigest&) = delete;
		FDigest& operator=(const FDigest&) = delete;

		void Update(const uint8* Input, uint64 Length) { HOST_CHECK(EVP_DigestUpdate(Context, Input, Length) == 1); }
		void Final(uint8* Result) { HOST_CHECK(EVP_DigestFinal_ex(Context, Result, nullptr) == 1); }

	private:
		EVP_MD_CTX* const Context = EVP_MD_CTX_new();
	};
} // namespace

struct FMD5::FState
{
	FDigest Digest{EVP_md5()};
};

FMD5::FMD5()
	: State(std::make_unique<FState>())
{
}

FMD5::~FMD5() = default;

void FMD5::Update(const uint8* Input, uint64 Length)
{
	State->Digest.Update(Input, Length);
}

void FMD5::Final(uint8* Digest)
{
	State->Digest.Final(Digest);
}

struct FSHA1::FState
{
	FDigest Digest{EVP_sha1()};
	uint8 Result[20] = {};
};

FSHA1::FSHA1()
	: State(std::make_unique<FState>())
{
}

FSHA1::~FSHA1() = default;

void FSHA1::Update(const uint8* Input, uint64 Length)
{
	State->Digest.Update(Input, Length);
}

void FSHA1::Final()
{
	State->Digest.Final(State->Result);
}

void FSHA1::GetHash(uint8* Digest)
{
	std::copy(std::begin(State->Result), std::end(State->Result), Digest);
}
