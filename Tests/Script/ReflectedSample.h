#pragma once

#include "Async/Async.h"
#include "CoreMinimal.h"
#include "Kismet/BlueprintAsyncActionBase.h"
#include "Kismet/BlueprintFunctionLibrary.h"
#include "Misc/DateTime.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/WeakObjectPtr.h"

#include "ReflectedSample.generated.h"

DECLARE_DYNAMIC_MULTICAST_DELEGATE_FourParams(
	FSampleEvent, const FString, text, const TArray<FString>&, list, const TArray<uint8>&, bytes, int64, big);
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

/** Has fields that scripts see. */
USTRUCT(BlueprintType)
struct FSampleOptions
{
	GENERATED_BODY()

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Sample")
	int32 Attempts = 3;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Sample")
	FString Hash = TEXT("none");

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Sample")
	ESampleColour Colour = ESampleColour::Blue;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Sample")
	TMap<FString, FString> Headers;
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
	static USampleLibrary* getTarget() { return GetMutableDefault<USampleLibrary>(); }

	/** Leaves its outputs as they were given. */
	UFUNCTION(BlueprintCallable, Category = "Sample")
	static void echo(bool& flag, uint8& small, int32& number, int64& big, float& ratio, FString& text, ESampleColour& colour,
		USampleLibrary*& object, FDateTime& moment, TArray<FString>& texts, TArray<int32>& numbers, TArray<uint8>& bytes,
		TMap<FString, FString>& map, UPARAM(ref) TMap<FString, int32>& counts);

	/** @return the pins as one text, in their order, with "|" between. */
	UFUNCTION(BlueprintPure, Category = "Sample")
	static FString describeDefaults(bool flag = true, uint8 small = 7, int32 number = 10485760, int64 big = -5, float ratio = 2.5,
		FString text = TEXT("a \"b\""), ESampleColour colour = ESampleColour::Blue, USampleLibrary* object = nullptr)
	{
		return FString::Printf(TEXT("%d|%d|%d|%lld|%.1f|%s|%d|%d"), static_cast<int32>(flag), static_cast<int32>(small), number, big, ratio,
			*text, static_cast<int32>(colour), static_cast<int32>(object == nullptr));
	}

	/** @return "key=value;" for every pair, in the map's order. */
	UFUNCTION(BlueprintPure, Category = "Sample")
	static FString describeMap(const TMap<FString, FString>& map)
	{
		FString text;
		for (const TPair<FString, FString>& pair : map)
		{
			text += pair.Key + TEXT("=") + pair.Value + TEXT(";");
		}
		return text;
	}

	/** @param text  empty: records stays as it was. */
	UFUNCTION(BlueprintCallable, Category = "Sample")
	static void addRecord(TArray<FSampleRecord> others, FString text, TArray<FSampleRecord>& records)
	{
		if (!text.IsEmpty())
		{
			others.Add({text});
			records = MoveTemp(others);
		}
	}

	UFUNCTION(BlueprintCallable, Category = "Sample")
	static FString textsOf(TArray<FSampleRecord> records)
	{
		FString texts;
		for (const FSampleRecord& record : records)
		{
			texts += record.text;
		}
		return texts;
	}

	UFUNCTION(BlueprintCallable, Category = "Sample")
	static void addForeignRecord(TArray<FForeignRecord>& records) { records.Add({}); }

	/** Raises onSample, inside the call or as a later task. */
	UFUNCTION(BlueprintCallable, Category = "Sample")
	static void raise(FString text, bool later)
	{
		const auto broadcast = [text] { getTarget()->onSample.Broadcast(text, {TEXT("a"), TEXT("b")}, {0, 255}, int64(1) << 40); };
		later ? AsyncTask(ENamedThreads::GameThread, broadcast) : broadcast();
	}

	/** Makes a new object that the library does not hold. */
	UFUNCTION(BlueprintCallable, Category = "Sample")
	static USampleLibrary* makeObject() { return NewObject<USampleLibrary>(); }

	UFUNCTION(BlueprintPure, Category = "Sample")
	static FSampleOptions echoOptions(const FSampleOptions& options) { return options; }

	UFUNCTION()
	static void notForScripts() {}

	static inline int32 handlerCalls = 0; // of the native handler below

	void countCall(const FString, const TArray<FString>&, const TArray<uint8>&, int64) { ++handlerCalls; }
};

/** A node that has its outcome one task after it was activated; below a status of 200 at once, and above 500 it destroys itself. */
UCLASS()
class USampleNode : public UBlueprintAsyncActionBase
{
	GENERATED_BODY()

public:
	USampleNode() { alive += HasAnyFlags(RF_ClassDefaultObject) ? 0 : 1; }
	virtual ~USampleNode() override { alive -= HasAnyFlags(RF_ClassDefaultObject) ? 0 : 1; }

	UPROPERTY(BlueprintAssignable, Category = "Sample")
	FSampleNodeDelegate OnSuccess;

	UPROPERTY(BlueprintAssignable, Category = "Sample")
	FSampleNodeDelegate OnFail;

	/** @param statusCode  102: the outcome does not end it, endLasting does; 410: it has ended inside this call. */
	UFUNCTION(BlueprintCallable, Category = "Sample", meta = (BlueprintInternalUseOnly = "true"))
	static USampleNode* startNode(int32 statusCode, FString requestID)
	{
		USampleNode* const node = NewObject<USampleNode>();
		node->status = statusCode;
		node->id = requestID;
		lasting = statusCode == 102 ? node : nullptr;
		if (statusCode == 410)
		{
			node->finish();
		}
		return node;
	}

	UFUNCTION(BlueprintCallable, Category = "Sample")
	static void endLasting() { lasting.Get()->SetReadyToDestroy(); }

	virtual void Activate() override
	{
		if (status < 200)
		{
			return finish();
		}
		AsyncTask(
			ENamedThreads::GameThread, [weak = TWeakObjectPtr<USampleNode>(this)] { weak.IsValid() ? weak.Get()->finish() : void(); });
	}

	UFUNCTION(BlueprintPure, Category = "Sample")
	FSampleOptions describe(int32 factor = 1) const
	{
		FSampleOptions described;
		described.Attempts = status * factor;
		described.Hash = id;
		return described;
	}

	UFUNCTION(BlueprintCallable, Category = "Sample")
	void rename(const FString& requestID, FString& before)
	{
		before = id;
		id = requestID;
	}

	static inline int32 alive = 0; // nodes that are not freed, the default object not counted

private:
	void finish()
	{
		(status < 400 ? OnSuccess : OnFail).Broadcast(status, id);
		if (lasting.Get() != this)
		{
			SetReadyToDestroy();
		}
		if (status >= 500)
		{
			ConditionalBeginDestroy();
		}
	}

	static inline TWeakObjectPtr<USampleNode> lasting;

	int32 status = 0;
	FString id;
};

inline void USampleLibrary::echo(bool&, uint8&, int32&, int64&, float&, FString&, ESampleColour&, USampleLibrary*&, FDateTime&,
	TArray<FString>&, TArray<int32>&, TArray<uint8>&, TMap<FString, FString>&, TMap<FString, int32>&)
{
}
