#pragma once

#include "Lua/Guarded.h"

namespace Script
{
	using NativeLua::guarded;
} // namespace Script
