#include "Upload/ContentTypes.h"

#include "CorvaneBPLibrary.h"
#include "Misc/Paths.h"

FString CorvaneContentTypes::Of(const FString& Path)
{
	UCorvaneBPLibrary* Library = UCorvaneBPLibrary::getCorvaneTarget(); // a copy of its table would take longer than all the rest
	return Library ? Library->getMimeTypeInternal(FPaths::GetExtension(Path, false)) : FString(TEXT("application/octet-stream"));
}
