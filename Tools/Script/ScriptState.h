#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Script
{
	struct Context;

	/** What the program around a script does for it. */
	struct ProgramAccess
	{
		/** Runs the queued tasks once. */
		std::function<void()> tick;
		/** Ticks until the condition holds or the seconds are over. @return whether it held. The condition may throw. */
		std::function<bool(const std::function<bool()>& condition, double seconds)> waitFor;
		/** Writes a line that the script prints. */
		std::function<void(std::string_view line)> print;
		/** Whether the script is to end wherever it stands; asked often. Empty = never. */
		std::function<bool()> isToEnd = nullptr;
	};

	/**
	 * One Lua world with the reflection registry in it: a global table per class and per enumeration, json, wait(),
	 * sleep() and tick().
	 * Close it before the objects are freed. Thread: game thread.
	 */
	class ScriptState
	{
	public:
		explicit ScriptState(ProgramAccess program);
		~ScriptState(); // closes
		ScriptState(const ScriptState&) = delete;
		ScriptState& operator=(const ScriptState&) = delete;

		/**
		 * Runs a script file to its last line. Its handlers stay bound afterwards.
		 * @param path  of the file; also arg[0].
		 * @param arguments  arg[1] and on, and the script's own "...".
		 * @return false when the script failed or ended itself with a status that is not 0.
		 */
		bool runFile(const std::string& path, const std::vector<std::string>& arguments = {});
		/** The same for a script in memory; chunkName is what error messages call it. */
		bool runText(const std::string& text, const std::string& chunkName = "script");

		/** @return true when the script is to run no further: an error, also in a handler, a call of os.exit, or the program's end. */
		bool hasEnded() const;
		/** @return message and traceback of the first error, of a handler or of the script; empty when there was none. */
		const std::string& error() const;
		/** @return 0, 1 after an error, or what the script gave to os.exit. */
		int exitStatus() const;

		/** @return a line for each thing that the script has most likely forgotten; none after an early end. */
		std::vector<std::string> warnings() const;

		/** Removes the script's handlers and lets go of its objects and records. A second call does nothing. */
		void close();

	private:
		bool run(int loadStatus, const std::vector<std::string>& arguments);

		std::unique_ptr<Context> context;
	};
} // namespace Script
