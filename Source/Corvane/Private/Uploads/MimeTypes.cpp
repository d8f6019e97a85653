#include "CorvaneBPLibrary.h"

#include "Misc/Paths.h"
#include "Rules/MimeRows.h"
#include "Uploads/UploadFile.h"

void UCorvaneBPLibrary::fillMimeTypeMap()
{
	for (const FCorvMimeRow& Row : CorvaneRules::mimeRows)
	{
		mimeTypeMap.Add(FString(Row.extension), FString(Row.type)); // a later row replaces an earlier one
	}
}

FString UCorvaneBPLibrary::getMimeTypeInternal(FString InExtension)
{
	const FString* Type = mimeTypeMap.Find(InExtension);
	return Type && !Type->IsEmpty() ? *Type : FString(TEXT("application/octet-stream"));
}

void UCorvaneBPLibrary::getMimeTypeByFile(EHTTPCorvFileUpload InDirectoryType, FString InFilePath, FString& OutMimeType, bool& bOutSuccess)
{
	const UCorvaneBPLibrary* Library = getCorvaneTarget();
	const FString Path = CorvaneUpload::fullPath(InDirectoryType, InFilePath);
	const FString* Type = Library && FPaths::FileExists(Path) ? Library->mimeTypeMap.Find(FPaths::GetExtension(Path)) : nullptr;
	OutMimeType = Type ? *Type : FString();
	bOutSuccess = Type != nullptr;
}

TMap<FString, FString> UCorvaneBPLibrary::getMimeTypeMap()
{
	const UCorvaneBPLibrary* Library = getCorvaneTarget();
	return Library ? Library->mimeTypeMap : TMap<FString, FString>();
}
