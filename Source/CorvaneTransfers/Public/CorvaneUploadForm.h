#pragma once

#include "CoreMinimal.h"
#include "CorvaneUpload.h"

#include "CorvaneUploadForm.generated.h"

/** A file in a form. */
USTRUCT(BlueprintType)
struct CORVANETRANSFERS_API FCorvaneFormFile
{
	GENERATED_BODY()

	/** The name of the form's field, such as the "name" of an input of a web page. Several files may share one. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	FString FieldName;

	/** Is only read. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	FString FilePath;

	/** What the server is told; empty = the last part of the path. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	FString FileName;

	/** What the server is told; empty = by the ending of the path, and application/octet-stream where that is not known. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	FString ContentType;
};

/** A text in a form. */
USTRUCT(BlueprintType)
struct CORVANETRANSFERS_API FCorvaneFormField
{
	GENERATED_BODY()

	/** May occur more than once. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	FString Name;

	/** Sent as UTF-8, with the line breaks that it has. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	FString Value;
};

/**
 * Uploads files and fields as a form (multipart/form-data), as a web page does, of up to 2 GiB. A form that is sent by POST
 * may do something each time it arrives: it is tried again only when nothing of it can have reached the server, or if
 * bMayBeRepeated allows it.
 */
UCLASS()
class CORVANETRANSFERS_API UCorvaneUploadForm : public UCorvaneUpload
{
	GENERATED_BODY()

public:
	/**
	 * Makes a node that uploads files and fields as a form.
	 * @param URL  http or https; a user and a password in it are sent, and never shown.
	 * @param Files  sent in this order, behind the fields, since some servers read no field behind a file.
	 * @param Fields  sent in this order.
	 * @param Options  how; what is not set has a value that suits most servers.
	 * @return the upload itself, to pause or cancel it.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers",
		meta = (BlueprintInternalUseOnly = "true", AutoCreateRefTerm = "Files,Fields,Options",
			DisplayName = "Upload Form (files and fields)"))
	static UCorvaneUploadForm* UploadForm(const FString& URL, const TArray<FCorvaneFormFile>& Files,
		const TArray<FCorvaneFormField>& Fields, const FCorvaneUploadOptions& Options);

	/**
	 * Starts an upload from native code.
	 * @param OnEnd  is called once, later, with the outcome.
	 * @param OnMove  may be unset; is called ten times a second at most while bytes move.
	 * @return the transfer, which is held until its outcome.
	 */
	static UCorvaneUploadForm* Start(const FString& URL, const TArray<FCorvaneFormFile>& Files, const TArray<FCorvaneFormField>& Fields,
		const FCorvaneUploadOptions& Options, FTell OnEnd, FTell OnMove = FTell());
};
