#include "CorvaneUploadForm.h"

#include "Misc/Guid.h"
#include "Misc/Paths.h"
#include "UObject/UObjectGlobals.h"
#include "Upload/ContentTypes.h"
#include "Upload/Form.h"
#include "Upload/UploadContent.h"

namespace CorvaneUploadForm
{
	/** Fills in what the server is told of files when the caller did not say. */
	static TArray<FCorvaneFormFile> Complete(TArray<FCorvaneFormFile> Files)
	{
		for (FCorvaneFormFile& File : Files)
		{
			File.FileName = File.FileName.IsEmpty() ? FPaths::GetCleanFilename(File.FilePath) : File.FileName;
			File.ContentType = File.ContentType.IsEmpty() ? CorvaneContentTypes::Of(File.FilePath) : File.ContentType;
		}
		return Files;
	}

	static FString MakeBoundary()
	{
		return TEXT("corvane-form-") + FGuid::NewGuid().ToString();
	}
} // namespace CorvaneUploadForm

UCorvaneUploadForm* UCorvaneUploadForm::UploadForm(const FString& InURL, const TArray<FCorvaneFormFile>& InFiles,
	const TArray<FCorvaneFormField>& InFields, const FCorvaneUploadOptions& InOptions)
{
	const TArray<FCorvaneFormFile> Complete = CorvaneUploadForm::Complete(InFiles);
	const FString Boundary = CorvaneForm::ChooseBoundary(Complete, InFields, &CorvaneUploadForm::MakeBoundary);
	const TSharedRef<FCorvaneUploadContent> Sent = MakeShared<FCorvaneUploadContent>();
	Sent->URL = InURL;
	Sent->Verb = TEXT("POST");
	Sent->ContentType = TEXT("multipart/form-data; boundary=") + Boundary;
	Sent->bFixedType = true;
	Sent->Segments = CorvaneForm::Compose(Complete, InFields, Boundary);
	Sent->Fault = CorvaneForm::FindFault(Complete, InFields);
	UCorvaneUploadForm* Node = NewObject<UCorvaneUploadForm>();
	Node->Prepare(Sent, InOptions);
	return Node;
}

UCorvaneUploadForm* UCorvaneUploadForm::Start(const FString& InURL, const TArray<FCorvaneFormFile>& InFiles,
	const TArray<FCorvaneFormField>& InFields, const FCorvaneUploadOptions& InOptions, FTell InOnEnd, FTell InOnMove)
{
	UCorvaneUploadForm* Node = UploadForm(InURL, InFiles, InFields, InOptions);
	Node->Begin(MoveTemp(InOnEnd), MoveTemp(InOnMove));
	return Node;
}
