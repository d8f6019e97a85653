#pragma once

#include "CoreMinimal.h"

/** A file extension without its dot, and the content type that files of it are sent with. */
struct FCorvMimeRow
{
	const ANSICHAR* extension;
	const ANSICHAR* type;
};

namespace CorvaneRules
{
	constexpr int32 mimeRowCount = 508;

	/** Seventeen extensions stand here twice: the later row is the one that counts. */
	extern const FCorvMimeRow mimeRows[mimeRowCount];
} // namespace CorvaneRules
