#include "Lab/Script/Script.h"

#include "Lab/Script/LuaState.h"

namespace Lab
{
	Script::Script(Origin& origin)
		: state(std::make_shared<LuaState>(origin))
	{
	}

	Script::~Script() = default;

	void Script::runFile(const std::string& path, const std::vector<std::string>& arguments)
	{
		state->runFile(path, arguments);
	}

	void Script::runText(const std::string& text)
	{
		state->runText(text);
	}
} // namespace Lab
