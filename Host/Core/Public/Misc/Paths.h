#pragma once

#include "Containers/UnrealString.h"

/** Path arithmetic. Thread: any. */
class FPaths
{
public:
	/** The project directory, with a slash at its end; it may be relative to the base directory. */
	static FString ProjectDir();
	/** A folder of the project's that may be written to; whoever needs it makes it. */
	static FString ProjectSavedDir();

	/**
	 * Makes a path absolute: relative ones start at the base directory, back slashes become slashes, doubled slashes and
	 * the steps "." and ".." go. An empty path gives the base directory with a slash at its end.
	 */
	static FString ConvertRelativePathToFull(const FString& Path);

	/** @return true for a file, false for a directory and for nothing. */
	static bool FileExists(const FString& Path);
	static bool DirectoryExists(const FString& Path);

	/** @return whether two paths name the same file, going by the paths alone; where the file system tells names apart by case, so does this. */
	static bool IsSamePath(const FString& PathA, const FString& PathB);

	/** Parts of a path, which slashes of both kinds cut. @return what stands after the last slash. */
	static FString GetCleanFilename(const FString& Path);
	/** @return what stands after the last dot of the file name; empty when there is none. */
	static FString GetExtension(const FString& Path, bool bIncludeDot = false);
	/** @return the path without its last extension, and without its directory unless told otherwise. */
	static FString GetBaseFilename(const FString& Path, bool bRemovePath = true);
	/** @return the directory, without a slash at its end. */
	static FString GetPath(const FString& Path);
};
