#pragma once

namespace ENamedThreads
{
	enum Type
	{
		GameThread,
		AnyBackgroundThreadNormalTask // some thread for work that may take its time
	};
} // namespace ENamedThreads
