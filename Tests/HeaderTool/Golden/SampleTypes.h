#pragma once

#include "CoreMinimal.h"

#include "SampleTypes.generated.h"

class USampleLibrary;

/** The numbers jump, count on and come in both notations. */
UENUM(BlueprintType)
enum class ESampleKind : uint8
{
	None UMETA(DisplayName = "Nothing \"at all\""),
	/** Half of ten. */
	Five = 5 UMETA(DisplayName = "A|B"),
	Six,
	Last = 0xFF UMETA(DisplayName = "Last")
};

USTRUCT(BlueprintType, meta = (ToolTip = "One record."))
struct SAMPLE_API FSampleRecord
{
	GENERATED_BODY()

	FString text;
	int32 number = 0;

	UPROPERTY()
	TArray<int32> kept = {1, 2, 3};
};

/**
 * It is over.
 * @param message  what became of it.
 */
DECLARE_DYNAMIC_MULTICAST_DELEGATE_TwoParams(FSampleDoneDelegate, const FString, message, const TArray<FString>&, lines);
// One step.
// There are more.
DECLARE_DYNAMIC_MULTICAST_DELEGATE_FourParams(
	FSampleStepDelegate, int64, bytes, ESampleKind, kind, USampleLibrary*, library, FSampleRecord, record);
