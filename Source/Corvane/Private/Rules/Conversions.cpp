#include "CorvaneBPLibrary.h"

#include "GenericPlatform/GenericPlatformHttp.h"

FString UCorvaneBPLibrary::urlEncode(FString InString)
{
	return FGenericPlatformHttp::UrlEncode(InString);
}

FString UCorvaneBPLibrary::urlEncodePure(FString InString)
{
	return urlEncode(InString);
}

FString UCorvaneBPLibrary::Int64ToFString(int64 InValue)
{
	return FString::Printf(TEXT("%lld"), InValue);
}

float UCorvaneBPLibrary::byteToMegabyte(int32 InByte)
{
	return static_cast<float>(InByte) * 9.536743e-7f;
}

int32 UCorvaneBPLibrary::megabyteToByte(int32 InMb)
{
	return static_cast<int32>(static_cast<uint32>(InMb) << 20); // large values wrap, as scripts know it
}
