#pragma once

#include <memory>
#include <string>
#include <vector>

namespace Lab
{
	class Origin;

	/**
	 * Says what an origin does, in Lua: lab.at("/file", lab.file{ size = 5000 }, lab.drop{ after = 1000 }). Its functions answer
	 * as long as it lives. Thread: any, one at a time; the origin's thread calls its functions.
	 */
	class Script
	{
	public:
		explicit Script(Origin& origin);
		~Script();

		/** Throws std::runtime_error with what went wrong, and where in the script. */
		void runFile(const std::string& path, const std::vector<std::string>& arguments = {});
		void runText(const std::string& text);

	private:
		const std::shared_ptr<class LuaState> state;
	};
} // namespace Lab
