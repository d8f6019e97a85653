#pragma once

#include "CoreMinimal.h"
#include "CorvaneBPLibrary.h"
#include "Kismet/BlueprintFunctionLibrary.h"
#include "Misc/DateTime.h"

#include "FileFunctionsCorv.generated.h"

/**
 * File utilities for scripts: stateless, synchronous, nothing is logged. Paths are resolved as getCleanDirectory does,
 * sizes and positions are bytes, times are UTC. What would need more than 2^31 - 1 elements of an array or units of a
 * text fails. Thread: any, the calling one.
 */
UCLASS(BlueprintType, Blueprintable)
class CORVANE_API UFileFunctionsCorv : public UBlueprintFunctionLibrary
{
	GENERATED_BODY()

public:
	/** @return true for a file, false for a directory and for nothing. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File", meta = (ToolTip = "Return true if the file exists. A directory is no file."))
	static bool fileExists(EFileFunctionsCorvDirectoryType directoryType, FString filePath);

	/** @return true for a directory, false for a file and for nothing. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File", meta = (ToolTip = "Return true if the directory exists."))
	static bool directoryExists(EFileFunctionsCorvDirectoryType directoryType, FString path);

	/** Makes one level: the directory above must be there. @return whether the directory is there now. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File",
		meta = (ToolTip = "Create a directory and return true if the directory was created or already existed. *"))
	static bool createDirectory(EFileFunctionsCorvDirectoryType directoryType, FString path);

	/** Removes an empty directory; one with content stays. @return whether there is none of that name now. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File",
		meta = (ToolTip = "Delete a directory and return true if the directory was deleted or otherwise does not exist. *"))
	static bool deleteDirectory(EFileFunctionsCorvDirectoryType directoryType, FString filePath);

	/** @return whether there was a file that is gone now; a read-only one stays. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File",
		meta = (ToolTip = "Delete a file. Return true if there was one and it is gone. Read only files are not deleted."))
	static bool deleteFile(EFileFunctionsCorvDirectoryType directoryType, FString filePath);

	/** @return bytes, or -1 when that is no file. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File",
		meta = (ToolTip = "Return the size of the file in bytes, or -1 if the file does not exist."))
	static int64 fileSize(EFileFunctionsCorvDirectoryType directoryType, FString filePath);

	/** Moves or renames; the target comes first. @return false when the target exists or its directory does not. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File",
		meta = (ToolTip = "Attempt to move a file. Return true if successful. Will not overwrite existing files. *"))
	static bool moveFile(EFileFunctionsCorvDirectoryType directoryTypeTo, FString filePathTo,
		EFileFunctionsCorvDirectoryType directoryTypeFrom, FString filePathFrom);

	/** @return false also when that is no file. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File", meta = (ToolTip = "Return true if the file is read only. *"))
	static bool isReadOnly(EFileFunctionsCorvDirectoryType directoryType, FString filePath);

	/** @param bNewReadOnlyValue  true protects the file from being written and deleted. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File",
		meta = (ToolTip = "Attempt to change the read only status of a file. Return true if successful. *"))
	static bool setReadOnly(EFileFunctionsCorvDirectoryType directoryType, FString filePath, bool bNewReadOnlyValue);

	/** @return the time of the last change; that of a directory as well. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File",
		meta = (ToolTip = "Return the modification time of a file. Returns FDateTime::MinValue() on failure *"))
	static FDateTime getTimeStamp(EFileFunctionsCorvDirectoryType directoryType, FString filePath);

	/** @return the time of the last access, as exactly as the file system keeps it. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File",
		meta = (ToolTip = "Return the last access time of a file. Returns FDateTime::MinValue() on failure *"))
	static FDateTime getAccessTimeStamp(EFileFunctionsCorvDirectoryType directoryType, FString filePath);

	/** Failures show in getTimeStamp only. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File", meta = (ToolTip = "Sets the modification time of a file *"))
	static void setTimeStamp(EFileFunctionsCorvDirectoryType directoryType, FString filePath, FDateTime DateTime);

	/** @return the resolved path itself where file systems tell upper from lower case. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File",
		meta = (ToolTip = "For case insensitive filesystems, returns the full path of the file with the same case as in the filesystem"))
	static FString getFilenameOnDisk(EFileFunctionsCorvDirectoryType directoryType, FString filePath);

	/**
	 * The full path that a directory kind and a path stand for; every function that takes the two resolves them so.
	 * Nothing has to be there.
	 * @param directoryType  E_gd: the path goes after the project directory, without a separator of its own; E_ad: the
	 * path as given, a relative one starting at the engine's base directory.
	 * @param filePath  of a file or a directory.
	 * @return the absolute path with forward slashes and without "." and ".." steps.
	 */
	UFUNCTION(BlueprintPure, Category = "Corvane|File",
		meta = (ToolTip = "Return the full path that the other file functions use for this directory type and path."))
	static FString getCleanDirectory(EFileFunctionsCorvDirectoryType directoryType, FString filePath);

	/**
	 * Reads a file from a position to its end.
	 * @param seekBytes  where to start; less than 0 is 0, more than the file has gives no bytes.
	 * @param success  false when the file cannot be read, or what is to be read is 2 GiB or more.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File",
		meta = (ToolTip = "Read the bytes of a file.\n@param seekBytes Skip so many bytes at the beginning of the file."))
	static TArray<uint8> readBytesFromFile(EFileFunctionsCorvDirectoryType directoryType, FString filePath, int64 seekBytes, bool& success);

	/** Reads text in UTF-8, or in UTF-16 if the file begins with its mark. @param data  empty on failure. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File", meta = (ToolTip = "Read a text file."))
	static void readStringFromFile(EFileFunctionsCorvDirectoryType directoryType, FString filePath, bool& success, FString& data);

	/** Replaces or makes a file; missing directories are made. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File",
		meta = (AutoCreateRefTerm = "bytes", ToolTip = "Write bytes into a file. An existing file is replaced."))
	static void writeBytesToFile(
		EFileFunctionsCorvDirectoryType directoryType, FString filePath, const TArray<uint8>& bytes, bool& success);

	/** The same with text: ASCII as it is, anything else in UTF-16 after a byte-order mark. The text comes before the path. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File",
		meta = (AutoCreateRefTerm = "data", ToolTip = "Write text into a file. An existing file is replaced."))
	static void writeStringToFile(EFileFunctionsCorvDirectoryType directoryType, const FString& data, FString filePath, bool& success);

	/**
	 * Writes bytes after those of a file; a missing file and its directories are made.
	 * @param success  false leaves the file with the bytes it had, and none where there was none.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File",
		meta = (AutoCreateRefTerm = "bytes", ToolTip = "Append bytes to a file. A missing file is created."))
	static void addBytesToFile(EFileFunctionsCorvDirectoryType directoryType, FString filePath, const TArray<uint8>& bytes, bool& success);

	/**
	 * @param success  false also when the file is too large for a text: 1,610,612,733 bytes is the most.
	 * @param base64String  padded standard base64; empty on failure.
	 * @param fileName  name and extension without the directory; on failure it stays as it was.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File",
		meta = (ToolTip = "Read a file and convert its bytes into a base64 string. The whole file is held in memory."))
	static void fileToBase64String(
		EFileFunctionsCorvDirectoryType directoryType, FString filePath, bool& success, FString& base64String, FString& fileName);

	/** @param base64String  padded standard base64; empty when there are more bytes than a text can show. */
	UFUNCTION(
		BlueprintCallable, Category = "Corvane|File", meta = (AutoCreateRefTerm = "bytes", ToolTip = "Convert bytes into a base64 string."))
	static void bytesToBase64String(const TArray<uint8>& bytes, FString& base64String);

	/**
	 * @param directoryType  of no meaning here.
	 * @param success  false when the text is damaged; there are no bytes then.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File",
		meta = (AutoCreateRefTerm = "base64String", ToolTip = "Convert a base64 string into bytes. The directory type is ignored."))
	static TArray<uint8> base64StringToBytes(EFileFunctionsCorvDirectoryType directoryType, const FString& base64String, bool& success);

	/** Encodes the UTF-8 bytes of a text. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File",
		meta = (AutoCreateRefTerm = "string", ToolTip = "Convert text (as UTF-8) into a base64 string."))
	static void stringToBase64String(const FString& string, FString& base64String);

	/** The way back. @param string  empty when base64String is damaged; bytes that are no UTF-8 become U+FFFD. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File",
		meta = (AutoCreateRefTerm = "base64String", ToolTip = "Convert a base64 string into text (from UTF-8)."))
	static void base64StringToString(FString& string, const FString& base64String);

	/**
	 * @param success  false when the file cannot be read to its end.
	 * @param MD5  32 lower-case hexadecimal digits; empty on failure.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File", meta = (ToolTip = "Return the MD5 hash of a file. Its size does not matter."))
	static void getMD5FromFile(EFileFunctionsCorvDirectoryType directoryType, FString filePath, bool& success, FString& MD5);

	/**
	 * Cuts a file into consecutive parts of equal size, the last of which also has what is left over. The source stays.
	 * Part number i is named like the source with "_i" after the base name, wherever that name occurs in the path, in any
	 * case: also in the name of a directory, which then must exist. Existing parts are replaced. The outputs are appended to.
	 * @param success  false when the file cannot be read, has no more bytes than parts, has no base name (".env"), or a part
	 * cannot be written; earlier parts then stay, and the entries of the failed one.
	 * @param absolutePathsOfTheParts  one entry for each part, in order.
	 * @param sizeOfTheParts  bytes of each part but the last.
	 * @param parts  less than 1 is 1.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File",
		meta = (ToolTip = "Split a file into parts of equal size, which are stored next to it. The file itself is not changed."))
	static void splitFile(bool& success, TArray<FString>& absolutePathsOfTheParts, TArray<int64>& sizeOfTheParts,
		EFileFunctionsCorvDirectoryType directoryType, FString filePath, int32 parts = 2);
};
