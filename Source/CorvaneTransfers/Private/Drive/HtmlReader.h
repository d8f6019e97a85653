#pragma once

#include "CoreMinimal.h"

/** A tag of a page. Names compare without regard to case. */
struct FCorvaneHtmlTag
{
	struct FAttribute
	{
		FString Name;
		/** Its entities are decoded. */
		FString Value;
	};

	FString Name;
	/** It closes an element. */
	bool bCloses = false;
	TArray<FAttribute> Attributes;

	/** @return the value of an attribute; of several the first counts, empty = there is none. */
	FString Get(const TCHAR* AttributeName) const;
};

/**
 * Reads a page tag by tag, as forgiving as a browser: no page breaks it, and its time grows with the page's length only.
 * Comments, scripts, styles and what else holds no tags are passed over. Thread: one at a time.
 */
class FCorvaneHtmlReader
{
public:
	/** @param InPage  outlives the reader. */
	explicit FCorvaneHtmlReader(const FString& InPage);

	/** @return false at the end of the page. */
	bool Next(FCorvaneHtmlTag& OutTag);
	/** @return what a person reads between the tags so far, with single blanks; of a long page the first part. */
	const FString& GetText() const { return Text; }

private:
	bool IsAt(const TCHAR* Part) const;
	void SkipBlanks();
	void SkipPast(const TCHAR* Part);
	void SkipContent(const FString& Name);
	FString TakeUntil(const TCHAR* Ends);
	void TakeText();
	bool TakeTag(FCorvaneHtmlTag& OutTag);
	bool TakeAttribute(FCorvaneHtmlTag& OutTag);
	FString TakeValue();

	const FString& Page;
	int32 At = 0;
	FString Text;
};
