#pragma once

#include "CoreMinimal.h"
#include "CorvaneUploadForm.h"
#include "Templates/Function.h"
#include "Upload/BodyStream.h"

/** The texts of multipart/form-data. File names and content types of its files are filled in. Thread: any. */
namespace CorvaneForm
{
	/** @return what is wrong, as a sentence; empty = nothing. */
	FString FindFault(const TArray<FCorvaneFormFile>& Files, const TArray<FCorvaneFormField>& Fields);

	/**
	 * Makes texts until one occurs in no name, type and value. Files are not looked into: a random text of that length does
	 * not occur in them.
	 */
	FString ChooseBoundary(
		const TArray<FCorvaneFormFile>& Files, const TArray<FCorvaneFormField>& Fields, const TFunction<FString()>& MakeText);

	/** @return a name as it stands between quotes: the way web pages write it, and so what servers read. */
	FString Quote(const FString& Name);

	/** @return the whole body, fields first. Sizes and times of files are not known yet. */
	TArray<FCorvaneBodySegment> Compose(
		const TArray<FCorvaneFormFile>& Files, const TArray<FCorvaneFormField>& Fields, const FString& Boundary);
} // namespace CorvaneForm
