#include "Misc/SecureHash.h"

#include <openssl/evp.h>

struct FMD5::FState
{
	EVP_MD_CTX* Context = EVP_MD_CTX_new();
	~FState() { EVP_MD_CTX_free(Context); }
};

FMD5::FMD5()
	: State(std::make_unique<FState>())
{
	HOST_CHECK(EVP_DigestInit_ex(State->Context, EVP_md5(), nullptr) == 1);
}

FMD5::~FMD5() = default;

void FMD5::Update(const uint8* Input, uint64 Length)
{
	HOST_CHECK(EVP_DigestUpdate(State->Context, Input, Length) == 1);
}

void FMD5::Final(uint8* Digest)
{
	HOST_CHECK(EVP_DigestFinal_ex(State->Context, Digest, nullptr) == 1);
}
