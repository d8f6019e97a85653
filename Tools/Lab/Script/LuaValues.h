#pragma once

#include "Lab/Plans/Request.h"

#include <lua.hpp>
#include <nlohmann/json_fwd.hpp>

#include <string>

namespace Lab
{
	/** @return a value as it stands at an index. Throws std::invalid_argument for what is none: functions, and tables too deep. */
	nlohmann::json fromLua(lua_State* lua, int index);
	/** Pushes a value. */
	void toLua(lua_State* lua, const nlohmann::json& value);
	/** Pushes a table that tells a request. Names of headers are in lower case. */
	void pushRequest(lua_State* lua, const Request& request);
	void pushText(lua_State* lua, const std::string& text);
} // namespace Lab
