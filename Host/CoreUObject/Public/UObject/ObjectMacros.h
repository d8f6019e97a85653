#pragma once

// The reflection macros: read by the header tool, (almost) nothing to the compiler. GENERATED_BODY and
// the dynamic delegates are the exceptions; the former finds its text in the generated header, by file and line.
#define UCLASS(...)
#define USTRUCT(...)
#define UENUM(...)
#define UFUNCTION(...)
#define UPROPERTY(...)
#define UPARAM(...)
#define UMETA(...)

#define BODY_MACRO_COMBINE_INNER(A, B, C, D) A##B##C##D
#define BODY_MACRO_COMBINE(A, B, C, D) BODY_MACRO_COMBINE_INNER(A, B, C, D)
#define GENERATED_BODY(...) BODY_MACRO_COMBINE(CURRENT_FILE_ID, _, __LINE__, _GENERATED_BODY)
