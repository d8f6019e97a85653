#include "GenericPlatform/GenericPlatformHttp.h"

#include "Containers/StringConv.h"

#include <curl/curl.h>
#include <memory>

FString FGenericPlatformHttp::UrlEncode(const FStringView UnencodedString)
{
	const FTCHARToUTF8 Bytes(UnencodedString.data(), static_cast<int32>(UnencodedString.size()));
	if (Bytes.Length() == 0)
	{
		return FString(); // libcurl takes a length of 0 for "measure it"
	}
	const std::unique_ptr<char, decltype(&curl_free)> Encoded(curl_easy_escape(nullptr, Bytes.Get(), Bytes.Length()), &curl_free);
	return FString(Encoded.get());
}
