#pragma once

/** Nothing reflected: the tool writes files without content for it. */
struct FPlain
{
	int number = 0;
};
