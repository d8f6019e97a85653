#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Script
{
	struct Context;

	/** How a script lets the game thread's work go on; given by the program around it. */
	struct LoopAccess
	{
		/** Runs the queued tasks once. */
		std::function<void()> tick;
		/** Ticks until the condition holds or the seconds are over. @return whether it held. The condition may throw. */
		std::function<bool(const std::function<bool()>& condition, double seconds)> waitFor;
		/** Whether the script is to end wherever it stands; asked often. Empty = never. */
		std::function<bool()> isToEnd = nullptr;
	};

	/**
	 * One Lua world with the reflection registry in it: a global table per class and per enumeration, wait() and tick().
	 * Close it before the objects are freed. Thread: game thread.
	 */
	class ScriptState
	{
	public:
		explicit ScriptState(LoopAccess loop);
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

		/** Removes the script's handlers and lets go of its objects and records. A second call does nothing. */
		void close();

	private:
		bool run(int loadStatus, const std::vector<std::string>& arguments);

		std::unique_ptr<Context> context;
	};
} // namespace Script
