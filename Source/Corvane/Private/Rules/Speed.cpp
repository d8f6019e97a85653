#include "Rules/Speed.h"

#include "Misc/Timespan.h"

void FCorvSpeed::measure(int64 Now, int64 Received)
{
	constexpr float mebibitsPerByte = 7.6293945e-6f;
	if (time != 0 && Now - time < ETimespan::TicksPerSecond)
	{
		return;
	}
	if (time != 0)
	{
		megabit = static_cast<float>(Received - bytes) * mebibitsPerByte;
	}
	bytes = Received;
	time = Now;
}
