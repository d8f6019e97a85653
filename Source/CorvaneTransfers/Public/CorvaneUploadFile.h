#pragma once

#include "CoreMinimal.h"
#include "CorvaneUpload.h"

#include "CorvaneUploadFile.generated.h"

/**
 * Uploads a file as the body of a PUT or POST, without a form around it, of up to 2 GiB. A PUT says what an address holds
 * from now on, so it is tried again after drops, silence and troubles of the server; a POST is not, as a form.
 */
UCLASS()
class CORVANETRANSFERS_API UCorvaneUploadFile : public UCorvaneUpload
{
	GENERATED_BODY()

public:
	/**
	 * Makes a node that uploads a file as it is.
	 * @param URL  http or https; a user and a password in it are sent, and never shown.
	 * @param FilePath  is only read. Its ending says the Content-Type, unless the headers do.
	 * @param Options  how; what is not set has a value that suits most servers.
	 * @return the upload itself, to pause or cancel it.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers",
		meta = (BlueprintInternalUseOnly = "true", AutoCreateRefTerm = "Options", DisplayName = "Upload File (bare)"))
	static UCorvaneUploadFile* UploadFile(const FString& URL, const FString& FilePath, const FCorvaneUploadOptions& Options);

	/**
	 * Starts an upload from native code.
	 * @param OnEnd  is called once, later, with the outcome.
	 * @param OnMove  may be unset; is called ten times a second at most while bytes move.
	 * @return the transfer, which is held until its outcome.
	 */
	static UCorvaneUploadFile* Start(
		const FString& URL, const FString& FilePath, const FCorvaneUploadOptions& Options, FTell OnEnd, FTell OnMove = FTell());
};
