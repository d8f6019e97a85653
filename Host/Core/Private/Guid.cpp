#include "Misc/Guid.h"

#include <openssl/rand.h>

FGuid FGuid::NewGuid()
{
	FGuid Guid;
	HOST_CHECK(RAND_bytes(Guid.Bytes.data(), static_cast<int>(Guid.Bytes.size())) == 1);
	return Guid;
}

FString FGuid::ToString() const
{
	static constexpr char digits[] = "0123456789ABCDEF";
	std::array<char, 33> Text{};
	for (size_t At = 0; At < Bytes.size(); ++At)
	{
		Text[2 * At] = digits[Bytes[At] >> 4];
		Text[2 * At + 1] = digits[Bytes[At] & 15];
	}
	return FString(Text.data());
}
