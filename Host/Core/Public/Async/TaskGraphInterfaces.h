#pragma once

namespace ENamedThreads
{
	enum Type
	{
		GameThread
	};
} // namespace ENamedThreads
