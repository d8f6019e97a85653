#include "Rules/Multipart.h"

#include "Containers/StringConv.h"

namespace CorvaneMultipart
{
	static const TCHAR* const lineEnd = TEXT("\r\n");

	static FString delimiter(const FString& Token)
	{
		return FString(TEXT("\r\n------")) + Token;
	}

	static FString disposition(const FString& Token, const FString& Field)
	{
		return delimiter(Token) + TEXT("\r\nContent-Disposition: form-data; name=\"") + CorvaneRules::safeName(Field);
	}

	static FString fileDisposition(const FString& Token, const FString& Field, const FString& File)
	{
		return disposition(Token, Field) + TEXT("\"; filename=\"") + CorvaneRules::safeName(File) + TEXT("\"\r\n");
	}
} // namespace CorvaneMultipart

FString CorvaneRules::boundaryToken(int64 Number)
{
	return FString::Printf(TEXT("UE4CorvanePlugin_%d"), static_cast<int32>(Number));
}

FString CorvaneRules::multipartType(const FString& Token)
{
	return FString(TEXT("multipart/form-data; boundary=----")) + Token;
}

FString CorvaneRules::safeHeaderValue(const FString& Text)
{
	return Text.Replace(TEXT("\r"), TEXT("%0D")).Replace(TEXT("\n"), TEXT("%0A"));
}

FString CorvaneRules::safeName(const FString& Name)
{
	return safeHeaderValue(Name).Replace(TEXT("\""), TEXT("%22"));
}

FString CorvaneRules::filePartHead(const FString& Token, const FString& Field, const FString& File, const FString& MimeType)
{
	return CorvaneMultipart::fileDisposition(Token, Field, File) + TEXT("Content-Type: ") + MimeType + TEXT("\r\n\r\n");
}

FString CorvaneRules::textPart(const FString& Token, const FString& Field, const FString& Value)
{
	return CorvaneMultipart::disposition(Token, Field) + TEXT("\"\r\n\r\n") + Value;
}

FString CorvaneRules::closingDelimiter(const FString& Token)
{
	return CorvaneMultipart::delimiter(Token) + TEXT("--\r\n");
}

TArray<uint8> CorvaneRules::fstringToByteArray(const FString& Text)
{
	const FTCHARToUTF8 Utf8(*Text, Text.Len());
	TArray<uint8> Bytes;
	Bytes.Append(reinterpret_cast<const uint8*>(Utf8.Get()), Utf8.Length());
	return Bytes;
}

FString CorvaneRules::streamLengthHeader(
	const FString& Token, const FString& Field, const FString& File, const FString& MimeType, int64 FileSize)
{
	const FString Head = CorvaneMultipart::lineEnd + CorvaneMultipart::fileDisposition(Token, Field, File) + MimeType;
	const int64 Length = static_cast<int64>(Head.Len()) + closingDelimiter(Token).Len() + FileSize;
	return FString::Printf(TEXT("%lld"), Length) + Head;
}
