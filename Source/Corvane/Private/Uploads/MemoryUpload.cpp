#include "CorvaneBPLibrary.h"

#include "HAL/FileManager.h"
#include "Misc/DateTime.h"
#include "Rules/Multipart.h"
#include "Serialization/Archive.h"
#include "Uploads/UploadBody.h"
#include "Uploads/UploadFile.h"

namespace CorvaneMemoryUpload
{
	static TArray<FString> allPaths(const FhttpRequest& Record)
	{
		TArray<FString> Paths = Record.filePaths;
		if (!Record.filePath.IsEmpty())
		{
			Paths.Add(Record.filePath);
		}
		return Paths;
	}

	/** Bytes that the body is likely to have; when it gets longer, it only has to move. */
	static int32 likelySize(const FhttpRequest& Record, const TArray<FString>& Paths)
	{
		constexpr int64 textOfPart = 512;
		int64 Size = textOfPart;
		for (const FString& Path : Paths)
		{
			const FString FullPath = CorvaneUpload::fullPath(Record.directoryType, Path);
			Size += textOfPart + FMath::Max<int64>(IFileManager::Get().FileSize(*FullPath), 0);
		}
		for (const TPair<FString, FString>& Field : Record.POSTData)
		{
			Size += textOfPart + Field.Value.Len();
		}
		return Size <= MAX_int32 ? static_cast<int32>(Size) : 0;
	}

	static bool hasRoom(const TArray<uint8>& Body, int64 Bytes)
	{
		return Bytes <= MAX_int32 - Body.Num();
	}

	static bool append(TArray<uint8>& Body, const FString& Text)
	{
		const TArray<uint8> Bytes = CorvaneRules::fstringToByteArray(Text);
		const bool bFits = hasRoom(Body, Bytes.Num());
		if (bFits)
		{
			Body.Append(Bytes);
		}
		return bFits;
	}

	/** The file goes straight to its place in the body: a second copy of it would double the memory that an upload takes. */
	static bool appendFile(TArray<uint8>& Body, const FString& Path)
	{
		const TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*Path));
		const int64 Size = Reader.IsValid() ? Reader->TotalSize() : -1;
		if (Size < 0 || !hasRoom(Body, Size))
		{
			return false;
		}
		const int32 Start = Body.Num();
		Body.SetNumUninitialized(Start + static_cast<int32>(Size));
		Reader->Serialize(Body.GetData() + Start, Size);
		return Reader->Close();
	}

	static bool appendFields(TArray<uint8>& Body, const FString& Token, const TMap<FString, FString>& Fields)
	{
		for (const TPair<FString, FString>& Field : Fields)
		{
			const FString* Value = Fields.Find(Field.Key);
			if (!Value)
			{
				UE_LOG(LogTemp, Warning, TEXT("UCorvaneBPLibrary: Parameter %s has no value."), *Field.Key);
				continue;
			}
			if (!append(Body, CorvaneRules::textPart(Token, Field.Key, *Value)))
			{
				return false;
			}
		}
		return append(Body, CorvaneRules::closingDelimiter(Token));
	}
} // namespace CorvaneMemoryUpload

bool UCorvaneBPLibrary::fillUploadInMemory(const FhttpRequest& InRequest, IHttpRequest& OutHttpRequest)
{
	const FString Token = CorvaneRules::boundaryToken(FDateTime::Now().GetTicks());
	OutHttpRequest.SetHeader(TEXT("Content-Type"), CorvaneRules::multipartType(Token));
	const TArray<FString> Paths = CorvaneMemoryUpload::allPaths(InRequest);
	TArray<uint8> Body;
	Body.Reserve(CorvaneMemoryUpload::likelySize(InRequest, Paths));
	FCorvUploadFile File;
	for (int32 Index = 0; Index < Paths.Num(); ++Index)
	{
		if (!CorvaneUpload::find(*this, InRequest.directoryType, Paths[Index], File))
		{
			return false;
		}
		const FString& Field = InRequest.fileIDs.IsValidIndex(Index) ? InRequest.fileIDs[Index] : InRequest.fileID;
		if (!CorvaneMemoryUpload::append(Body, CorvaneRules::filePartHead(Token, Field, File.name, File.mimeType)) ||
			!CorvaneMemoryUpload::appendFile(Body, File.path))
		{
			CorvaneUpload::logUnreadable(File.path);
			return false;
		}
	}
	if (!CorvaneMemoryUpload::appendFields(Body, Token, InRequest.POSTData))
	{
		CorvaneUpload::logUnreadable(File.path); // with the fields after it, it has no room in memory any more
		return false;
	}
	OutHttpRequest.SetHeader(TEXT("Content-Length"), Int64ToFString(Body.Num()));
	CorvaneUpload::sendBytes(InRequest, MoveTemp(Body), OutHttpRequest);
	return true;
}
