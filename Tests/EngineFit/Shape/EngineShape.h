#pragma once

// What the code that the engine's header tool generates leans on. It compiles with this, and has nothing to run on.

#include "CoreMinimal.h"
#include "UObject/Class.h"
#include "UObject/Object.h"

struct FFrame;

UClass* MakeStaticClass(UClass* (*Super)());
const UEnum* MakeStaticEnum(size_t Size);
const UScriptStruct* MakeStaticStruct(const FPropertyType& (*Type)());
void ProcessMulticastDelegate(const FMulticastScriptDelegate& Delegate, void* Parameters);

// The generated header says what a declaration stands for: a function that broadcasts, and the class that calls it.
#undef DECLARE_DYNAMIC_MULTICAST_DELEGATE_TwoParams
#undef DECLARE_DYNAMIC_MULTICAST_DELEGATE_FourParams
#undef DECLARE_DYNAMIC_MULTICAST_DELEGATE_FiveParams
#undef DECLARE_DYNAMIC_MULTICAST_DELEGATE_SixParams
#define DECLARE_DYNAMIC_MULTICAST_DELEGATE_TwoParams(Delegate, ...) Delegate##_DECLARED
#define DECLARE_DYNAMIC_MULTICAST_DELEGATE_FourParams(Delegate, ...) Delegate##_DECLARED
#define DECLARE_DYNAMIC_MULTICAST_DELEGATE_FiveParams(Delegate, ...) Delegate##_DECLARED
#define DECLARE_DYNAMIC_MULTICAST_DELEGATE_SixParams(Delegate, ...) Delegate##_DECLARED
