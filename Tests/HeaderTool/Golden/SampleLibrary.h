#pragma once

#include "CoreMinimal.h"
#include "Kismet/BlueprintFunctionLibrary.h"
#include "SampleTypes.h"

#include "SampleLibrary.generated.h"

class USampleNode;

UCLASS(BlueprintType, Blueprintable,
	meta = (ToolTip = "Two "
					  "pieces,\none \\ text: ä."))
class SAMPLE_API USampleLibrary : public UBlueprintFunctionLibrary
{
	GENERATED_BODY()

public:
	USampleLibrary(const FObjectInitializer& ObjectInitializer = FObjectInitializer::Get());

	UFUNCTION(BlueprintCallable, Category = "Sample|Values",
		meta = (DisplayName = "Mix", ToolTip = "Mixes everything.", AutoCreateRefTerm = "table, missing", AdvancedDisplay = limit))
	static int32 mix(TArray<FSampleRecord> records, const TMap<FString, FString>& table, bool flag, uint8 small, float factor,
		FString& text, UPARAM(ref) TArray<FString>& lines, UPARAM(DisplayName = "How much") int64 limit = 10485760,
		ESampleKind kind = ESampleKind::Six, const FString& title = TEXT("a \"b\""), FString plain = "", float step = -0.5f,
		bool last = true, USampleNode* node = nullptr);

	/**
	 * Gives the text.
	 * @return what "setText" \ stored.
	 */
	UFUNCTION(BlueprintPure, Category = "Sample")
	const FString& getText() const;

	UFUNCTION(BlueprintPure, Category = Sample)
	static UPARAM(DisplayName = "Itself") const USampleLibrary* find(const USampleLibrary* library);

	UFUNCTION()
	void onDone(const FString message, const TArray<FString>& lines);

	/** Raised when all is done. */
	UPROPERTY(BlueprintAssignable, Category = "Sample|Events")
	FSampleDoneDelegate onSampleDone;

	UPROPERTY()
	TArray<FSampleRecord> tracked;

private:
	UPROPERTY(BlueprintAssignable, Category = "Sample|Events", meta = (ToolTip = "Hidden from C++."))
	FSampleStepDelegate onSampleStep;
};
