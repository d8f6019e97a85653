#include "CorvaneUploadFile.h"

#include "UObject/UObjectGlobals.h"
#include "Upload/ContentTypes.h"
#include "Upload/UploadContent.h"

UCorvaneUploadFile* UCorvaneUploadFile::UploadFile(const FString& InURL, const FString& InFilePath, const FCorvaneUploadOptions& InOptions)
{
	const TSharedRef<FCorvaneUploadContent> Sent = MakeShared<FCorvaneUploadContent>();
	Sent->URL = InURL;
	Sent->Verb = TEXT("PUT");
	Sent->ContentType = CorvaneContentTypes::Of(InFilePath);
	Sent->Fault = InFilePath.IsEmpty() ? TEXT("There is no file to send: its path is empty.") : TEXT("");
	FCorvaneSentFile File;
	File.Path = InFilePath;
	Sent->Segments.Add(FCorvaneBodySegment::OfFile(File));
	UCorvaneUploadFile* Node = NewObject<UCorvaneUploadFile>();
	Node->Prepare(Sent, InOptions);
	return Node;
}

UCorvaneUploadFile* UCorvaneUploadFile::Start(
	const FString& InURL, const FString& InFilePath, const FCorvaneUploadOptions& InOptions, FTell InOnEnd, FTell InOnMove)
{
	UCorvaneUploadFile* Node = UploadFile(InURL, InFilePath, InOptions);
	Node->Begin(MoveTemp(InOnEnd), MoveTemp(InOnMove));
	return Node;
}
