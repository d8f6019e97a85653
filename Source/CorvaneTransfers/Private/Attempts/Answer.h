#pragma once

#include "CoreMinimal.h"

/** What a Content-Range header says. Positions are bytes. */
struct FCorvaneContentRange
{
	/** First and Last are told and fit each other and the total. */
	bool bValid = false;
	int64 First = -1;
	/** The last byte itself, not the one behind it. */
	int64 Last = -1;
	/** Of the whole file; -1 = unknown. May be told without a span, as "bytes * / 1000" does. */
	int64 Total = -1;
};

/** What tells one version of a file on a server from the next. */
struct FCorvaneVersion
{
	/** As it was sent, with its quotes, and with W/ before them when it is a weak one. */
	FString ETag;
	/** As it was sent. */
	FString LastModified;
	/** The file was at least a minute old when its date was told: it cannot have changed twice within it. */
	bool bDateIsStrong = false;

	bool HasStrongETag() const;
	/** @return what If-Range may name: the strong entity tag, else the strong date, else nothing. */
	FString ForIfRange() const;
	/**
	 * Whether two answers can be of one version. Entity tags decide when both have one, else dates, else nothing speaks against it.
	 */
	bool MayBe(const FCorvaneVersion& Other) const;
	/** @return the date as it is kept for a later run of the program: one that is not strong has W/ before it, as such a tag has. */
	FString DateForDisk() const;
	/** @param Date  what DateForDisk gave. */
	static FCorvaneVersion FromDisk(const FString& Tag, const FString& Date);
};

/** What the lines of an answer told, as far as a transfer cares. Header lines of a hostile server leave what they break untold. */
struct FCorvaneAnswer
{
	/** 0 = no answer. */
	int32 Code = 0;
	/** Bytes of the body that follows; -1 when that is not told or cannot be compared with what arrives (chunks, encodings). */
	int64 ContentLength = -1;
	/** The lines told how long the body is, or that it comes in chunks; else only the end of the connection ends it. */
	bool bTellsEnd = false;
	FCorvaneContentRange Range;
	FCorvaneVersion Version;
	/** As they were sent. */
	FString Date;
	FString RetryAfter;
	FString ContentType;
	/** The body is packed although nothing but "identity" was asked for: what arrives are not the bytes that ranges count. */
	bool bEncoded = false;
	/** Content-Disposition says that it is to be kept as a file. */
	bool bAttachment = false;
	/** "name=value" of each that was set. */
	TArray<FString> Cookies;
	/** Headers that were asked for by name, as they were sent. */
	TMap<FString, FString> Kept;

	bool IsSuccess() const { return Code >= 200 && Code < 300; }
	/** @return bytes of the whole file, by the range of a part (206, 416), else by the length of the body; -1 = not told. */
	int64 ToldTotal() const;
};

/** Takes the lines of one answer as they come. Thread: one at a time. */
class FCorvaneAnswerReader
{
public:
	/** Begins anew: of several blocks the last one counts. */
	void TakeStatus(int32 Code);
	/** @param Name  any case. @param Value  without blanks around it. */
	void TakeHeader(const FString& Name, const FString& Value);
	const FCorvaneAnswer& Get() const { return Answer; }
	/** Keeps these headers, too, from the next answer on. */
	void Keep(const TArray<FString>& Names) { NamesToKeep = Names; }

private:
	void JudgeDate();

	TArray<FString> NamesToKeep;
	FCorvaneAnswer Answer;
	bool bChunked = false;
};

namespace CorvaneAnswer
{
	/** @return the number that a text of 1 to 18 decimal digits is, else -1. */
	int64 ParseNumber(const FString& Text);
	FCorvaneContentRange ParseRange(const FString& Value);
} // namespace CorvaneAnswer
