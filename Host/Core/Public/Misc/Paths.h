#pragma once

#include "Containers/UnrealString.h"

/** Path arithmetic. Thread: any. */
class FPaths
{
public:
	/** The project directory, with a slash at its end; it may be relative to the base directory. */
	static FString ProjectDir();

	/**
	 * Makes a path absolute: relative ones start at the base directory, back slashes become slashes, doubled slashes and
	 * the steps "." and ".." go. An empty path gives the base directory with a slash at its end.
	 */
	static FString ConvertRelativePathToFull(const FString& Path);

	/** @return true for a file, false for a directory and for nothing. */
	static bool FileExists(const FString& Path);
};
