#pragma once

#include "CoreMinimal.h"

/** The texts of multipart/form-data bodies. They name a boundary by its token; all line ends are CR LF. */
namespace CorvaneRules
{
	/** @param number  only its lower 32 bits count, read as a signed number. */
	FString boundaryToken(int64 number);

	/** The value of the Content-Type header. */
	FString multipartType(const FString& token);

	/** A text made safe as the value of a header: it cannot end the line. */
	FString safeHeaderValue(const FString& text);

	/** A field or file name made safe for a quoted place in a header: it can end neither the quotes nor the line. */
	FString safeName(const FString& name);

	/** The way from the part before, or from the start of the body, to the first byte of a file. */
	FString filePartHead(const FString& token, const FString& field, const FString& file, const FString& mimeType);

	/** A whole text field, from the part before on. @param value  sent as it is, also when it is empty. */
	FString textPart(const FString& token, const FString& field, const FString& value);

	/** The end of a body; the tail that a stream multipart upload puts after its file. */
	FString closingDelimiter(const FString& token);

	/** The text as UTF-8, without a terminator. */
	TArray<uint8> fstringToByteArray(const FString& text);

	/**
	 * The Content-Length value of a stream multipart upload: the length of the body, and after it the end of the header
	 * block and the head of the part, without the blank line that the transport puts after the last header anyway. The
	 * MIME type stands there without its name. The length counts UTF-16 units of the two texts, so it is that of the bytes
	 * sent as long as the names are ASCII.
	 * @param fileSize  bytes of the file without the tail.
	 */
	FString streamLengthHeader(const FString& token, const FString& field, const FString& file, const FString& mimeType, int64 fileSize);
} // namespace CorvaneRules
