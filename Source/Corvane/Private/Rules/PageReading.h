#pragma once

#include "CoreMinimal.h"

/** What the view page of a Drive file tells. */
struct FCorvFileInfo
{
	bool bReadable = false;
	FString name;
	int64 size = 0; // bytes
};

/**
 * How file pages are read. All searches ignore the case of letters; a mark that is missing leaves the text as it is, so a
 * page that has changed leads to an address that fails, never to a crash.
 */
namespace CorvaneRules
{
	/** Reads the list after "itemJson:"; not readable when there is none, or it has fewer than 28 fields. */
	FCorvFileInfo readFileInfo(const FString& page);

	/** @return the token of a confirmation page, empty when the page asks for none. */
	FString confirmationToken(const FString& page);

	/** @return the address behind the link that a file page offers for its download. */
	FString downloadLink(const FString& page);

	/** @return the size that a confirmation page shows, in bytes; 0 when it shows none. Whatever is not in M counts as G. */
	int64 shownSize(const FString& page);
} // namespace CorvaneRules
