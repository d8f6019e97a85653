#pragma once

#include "CoreMinimal.h"
#include "Kismet/BlueprintAsyncActionBase.h"
#include "Kismet/BlueprintFunctionLibrary.h"
#include "Misc/DateTime.h"

#include "ReflectedSample.generated.h"

DECLARE_DYNAMIC_MULTICAST_DELEGATE_SixParams(
	FSampleEvent, const FString, text, const TArray<FString>&, list, int32, number, const TArray<uint8>&, bytes, int64, big, float, ratio);
DECLARE_DYNAMIC_MULTICAST_DELEGATE_TwoParams(FSampleNodeDelegate, int32, statusCode, const FString, requestID);

UENUM(BlueprintType)
enum class ESampleColour : uint8
{
	Red = 0,
	Green = 5 UMETA(DisplayName = "Leaf"),
	Blue = 6
};

USTRUCT(BlueprintType)
struct FSampleRecord
{
	GENERATED_BODY()

	FString text;
};

USTRUCT(BlueprintType)
struct FForeignRecord
{
	GENERATED_BODY()
};

/** Has a script function of every shape, for the tests of the script front end. */
UCLASS()
class USampleLibrary : public UBlueprintFunctionLibrary
{
	GENERATED_BODY()

public:
	UPROPERTY(BlueprintAssignable, Category = "Sample")
	FSampleEvent onSample;

	UFUNCTION(BlueprintCallable, Category = "Sample")
	static USampleLibrary* getTarget();

	UFUNCTION(BlueprintCallable, Category = "Sample")
	static void echoPlain(bool inFlag, uint8 inSmall, int32 inNumber, int64 inBig, float inRatio, FString inText, ESampleColour inColour,
		USampleLibrary* inObject, bool& flag, uint8& small, int32& number, int64& big, float& ratio, FString& text, ESampleColour& colour,
		USampleLibrary*& object);

	UFUNCTION(BlueprintCallable, Category = "Sample")
	static void echoContainers(const TArray<FString>& inTexts, TArray<int32> inNumbers, TArray<uint8> inBytes,
		const TMap<FString, FString>& inMap, TMap<FString, int32> inCounts, TArray<FString>& texts, TArray<int32>& numbers,
		TArray<uint8>& bytes, TMap<FString, FString>& map, TMap<FString, int32>& counts);

	/** @param list  gets the moment in front of what it had. */
	UFUNCTION(BlueprintCallable, Category = "Sample")
	static FDateTime echoTime(FDateTime moment, TArray<FDateTime>& list);

	/** @return the pins as one text, in their order, with "|" between. */
	UFUNCTION(BlueprintPure, Category = "Sample")
	static FString describeDefaults(bool flag = true, uint8 small = 7, int32 number = 10485760, int64 big = -5, float ratio = 2.5,
		FString text = TEXT("a \"b\""), ESampleColour colour = ESampleColour::Blue);

	/** @return "key=value;" for every pair, in the map's order. */
	UFUNCTION(BlueprintPure, Category = "Sample")
	static FString describeMap(TMap<FString, FString> map);

	/** Appends to its outputs instead of setting them. */
	UFUNCTION(BlueprintCallable, Category = "Sample")
	static void appendText(FString text, TArray<FString>& list, UPARAM(ref) int32& count);

	UFUNCTION(BlueprintCallable, Category = "Sample")
	static void addRecord(TArray<FSampleRecord> otherRecords, FString text, TArray<FSampleRecord>& records);

	UFUNCTION(BlueprintCallable, Category = "Sample")
	static TArray<FString> recordTexts(TArray<FSampleRecord> records);

	UFUNCTION(BlueprintCallable, Category = "Sample")
	static void makeForeignRecord(TArray<FForeignRecord>& records);

	/** Raises onSample, inside the call or as a later task. */
	UFUNCTION(BlueprintCallable, Category = "Sample")
	static void raise(FString text, bool later);

	/** Makes a new object that the library does not hold. */
	UFUNCTION(BlueprintCallable, Category = "Sample")
	static USampleLibrary* makeObject();

	UFUNCTION()
	static void notForScripts();

	static int32 handlerCalls; // of the native handler below

	UFUNCTION()
	void countCall(const FString text, const TArray<FString>& list, int32 number, const TArray<uint8>& bytes, int64 big, float ratio);
};

/** A node that has its outcome one task after it was activated; with a status of 500 and above it destroys itself then. */
UCLASS()
class USampleNode : public UBlueprintAsyncActionBase
{
	GENERATED_BODY()

public:
	USampleNode();
	virtual ~USampleNode() override;

	UPROPERTY(BlueprintAssignable, Category = "Sample")
	FSampleNodeDelegate OnSuccess;

	UPROPERTY(BlueprintAssignable, Category = "Sample")
	FSampleNodeDelegate OnFail;

	/** @param immediately  raise the event inside Activate. */
	UFUNCTION(BlueprintCallable, Category = "Sample", meta = (BlueprintInternalUseOnly = "true"))
	static USampleNode* startNode(int32 statusCode, FString requestID, bool immediately);

	/** Makes a node whose outcome does not end it; endLasting does. */
	UFUNCTION(BlueprintCallable, Category = "Sample", meta = (BlueprintInternalUseOnly = "true"))
	static USampleNode* startLastingNode();

	UFUNCTION(BlueprintCallable, Category = "Sample")
	static void endLasting();

	/** Makes a node that has ended inside this call. */
	UFUNCTION(BlueprintCallable, Category = "Sample", meta = (BlueprintInternalUseOnly = "true"))
	static USampleNode* startEndedNode();

	virtual void Activate() override;

	static int32 alive; // nodes that are not freed, the default object not counted

private:
	void finish();

	int32 status = 0;
	FString id;
	bool isImmediate = false;
	bool isLasting = false;
};
