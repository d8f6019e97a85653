#pragma once

#include "Attempts/RequestBody.h"
#include "CoreMinimal.h"
#include "Files/FileHash.h"
#include "Files/HashOnTheWay.h"
#include "Files/SentFile.h"
#include "GenericPlatform/GenericPlatformFile.h"
#include "Pace/SharedPace.h"
#include "Templates/Function.h"
#include "Templates/UniquePtr.h"
#include "Upload/BodyEnd.h"

#include <atomic>

/** A part of a body: some bytes in memory, or a range of a file. */
struct FCorvaneBodySegment
{
	/** Of a segment without a file. */
	TArray<uint8> Bytes;
	/** Without a path: the segment is Bytes. */
	FCorvaneSentFile File;
	/** Of the range of the file, in bytes. */
	int64 Start = 0;
	int64 Length = 0;

	static FCorvaneBodySegment OfBytes(TArray<uint8> InBytes);
	static FCorvaneBodySegment OfText(const FString& Text); // as UTF-8
	/** @param InLength  -1 = to the end of the file. */
	static FCorvaneBodySegment OfFile(const FCorvaneSentFile& InFile, int64 InStart = 0, int64 InLength = -1);

	bool IsFile() const { return !File.Path.IsEmpty(); }
	int64 Num() const { return IsFile() ? Length : Bytes.Num(); }
};

/**
 * Several segments as the one body of a request: the size is known before the first byte, one file at most is open, and bytes
 * go from it into the memory of whoever reads, and nowhere else. A file that is not what it was when it was found ends
 * the body before its last byte is handed out, so that no server takes a mixture for the file.
 *
 * Thread: any for what reads sizes and counts; else one at a time, which is the HTTP thread while it is sent.
 */
class FCorvaneBodyStream : public FCorvaneRequestBody
{
public:
	/**
	 * @param InHash  of the bytes out of files; one that is expected has to be theirs.
	 * @param InTellFault  is told once, by whoever reads, when the body cannot be had: what is sent behind that is of no use.
	 */
	explicit FCorvaneBodyStream(TArray<FCorvaneBodySegment> InSegments, const FCorvaneHashWish& InHash = FCorvaneHashWish(),
		TUniqueFunction<void()> InTellFault = TUniqueFunction<void()>());

	/** @param InPart  of a pace that reading is held to, roughly; null = none. Comes before the first byte. */
	void Share(const TSharedPtr<FCorvanePaceShare>& InPart) { PartOfPace = InPart; }

	virtual int64 TotalSize() override { return Total; }
	virtual int64 Tell() override { return Position; }
	/** Goes back to the first byte, or stays: any other place is an error. */
	virtual void Seek(int64 NewPosition) override;
	/** Fills all of the memory: with zeros, and an error, when the body cannot be had. */
	virtual void Serialize(void* Value, int64 Number) override;
	virtual int64 GetHandedOut() const override { return HandedOut; }

	/** Closes what is open. The last call. */
	FCorvaneBodyEnd Finish();

private:
	bool Read(uint8* To, int64 Number);
	bool ReadPart(const FCorvaneBodySegment& Segment, uint8* To, int64 Number);
	bool Open(const FCorvaneBodySegment& Segment);
	bool LeaveFinished();
	bool LeaveFile(const FCorvaneSentFile& File);
	bool CheckHash();
	bool Fail(const FCorvaneFileResult& Why);
	void Restart();

	const TArray<FCorvaneBodySegment> Segments;
	const FCorvaneHashWish Wish;
	TUniqueFunction<void()> TellFault;
	TSharedPtr<FCorvanePaceShare> PartOfPace;
	int64 Total = 0; // as the next, never changed after construction
	int64 BytesOfFiles = 0;
	std::atomic<int64> HandedOut{0};

	int64 Position = 0;
	int32 Current = 0; // index of the segment that is read
	int64 Within = 0; // position in it
	TUniquePtr<IFileHandle> File; // of the current segment
	FCorvaneHashOnTheWay HashOnTheWay;
	int64 ReadOfFiles = 0;
	FString Hash;
	FCorvaneFileResult Fault;
};
