#pragma once

#include "CoreMinimal.h"
#include "Templates/Function.h"

/**
 * The form that all journals have: text in UTF-8, one record a line, its fields cut by tabs, the last of them a checksum of the
 * line. Lines are only ever added. The last line may be torn, for it was being written when the power went; a fault in any other
 * place means that none of it is to be trusted. Thread: any.
 */
namespace CorvaneJournalLines
{
	/**
	 * @param Fields  control characters in them are exchanged for another one, with which the text equals no true address or
	 *                header line.
	 * @return a line ready to be added.
	 */
	TArray<uint8> Make(const TArray<FString>& Fields);

	/**
	 * @param Bytes  whatever stands in the file.
	 * @param Take  gets the fields of each good line, without the checksum. @return false when it does not know such a record.
	 * @return bytes up to the end of the last good line; -1 = none of it is to be trusted.
	 */
	int64 Read(const TArray<uint8>& Bytes, const TFunction<bool(const TArray<FString>&)>& Take);

	FString ToText(int64 Number);
	/** @return false when the text is not the one that ToText gives, or the number is below Least. */
	bool ParseNumber(const FString& Text, int64 Least, int64& Number);
} // namespace CorvaneJournalLines
