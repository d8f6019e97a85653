#include "Upload/ContentTypes.h"

#include "CorvaneBPLibrary.h"
#include "Misc/Paths.h"

FString CorvaneContentTypes::Of(const FString& Path)
{
	const TMap<FString, FString> Types = UCorvaneBPLibrary::getMimeTypeMap();
	const FString* Known = Types.Find(FPaths::GetExtension(Path, false));
	return Known ? *Known : FString(TEXT("application/octet-stream"));
}
