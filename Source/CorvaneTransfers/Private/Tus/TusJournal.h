#pragma once

#include "CoreMinimal.h"
#include "Files/Journal.h"
#include "Files/SentFile.h"
#include "Misc/DateTime.h"

/** An upload that a server has begun for us. */
struct FCorvaneTusUpload
{
	/** Its own address, without user and password; empty = there is none. */
	FString Address;
	/** UTC, from then on the server may have forgotten it; MinValue = it did not say. */
	FDateTime Expires = FDateTime::MinValue();
};

/**
 * What the journal of a resumable upload tells, in the form of CorvaneJournalLines:
 *
 *     upload 1 ENDPOINT FILE SIZE CHANGED ADDRESS    the server has begun an upload of that file; 1 is the version of this format
 *     kept OFFSET TAIL-HASH EXPIRES                  the server has so many bytes, and the file ended there with these
 *
 * Times are ticks; ENDPOINT is without user and query, for those may hold keys. The last "upload" begins what counts.
 */
struct FCorvaneTusJournal
{
	/** Without an address nothing else counts. */
	FCorvaneTusUpload Upload;
	FString Endpoint;
	/** As it was when the upload was begun. */
	FCorvaneSentFile File;
	/** What the server had for sure. */
	FCorvaneFileStart Kept;
	/** Bytes of the journal up to the end of its last good line. */
	int64 ValidBytes = 0;

	/** @param Bytes  whatever stands in the file. */
	static FCorvaneTusJournal Read(const TArray<uint8>& Bytes);

	/** @param Address  of the endpoint. @return what takes its place in a journal. */
	static FString EndpointOf(const FString& Address);
	/** @return the name of the journal's file: another one for each endpoint with its query, and file. */
	static FString FileName(const FString& Address, const FString& Path);

	/** @return lines ready to be added. */
	static TArray<uint8> UploadLine(const FString& Endpoint, const FCorvaneSentFile& File, const FCorvaneTusUpload& Upload);
	static TArray<uint8> KeptLine(const FCorvaneFileStart& Kept, const FCorvaneTusUpload& Upload);
};
