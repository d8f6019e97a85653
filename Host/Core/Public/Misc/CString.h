#pragma once

#include "CoreTypes.h"

/** Numbers out of text: blanks and a sign may lead, reading stops at what does not belong, no number gives 0. Thread: any. */
struct FCString
{
	/** A number out of range gives the nearest one. */
	static int64 Atoi64(const TCHAR* Text);
	static double Atod(const TCHAR* Text);
};
