#include "Misc/Guid.h"

#include <openssl/rand.h>

FGuid FGuid::NewGuid()
{
	// Asked for in one go: each call costs the library more than the bytes do.
	thread_local std::array<FGuid, 64> Fresh;
	thread_local size_t Left = 0;
	if (Left == 0)
	{
		HOST_CHECK(RAND_bytes(reinterpret_cast<uint8*>(Fresh.data()), sizeof(Fresh)) == 1);
		Left = Fresh.size();
	}
	return Fresh[--Left];
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
