#pragma once

#include <thread>

namespace Program
{
	/**
	 * Turns Ctrl-C (SIGINT), SIGTERM and SIGHUP into a wish, while it lives: the verb under way ends in order, its loop is
	 * woken at once, and a system call that the main thread waits in ends with EINTR. Whoever asks once more, by Ctrl-C or
	 * SIGTERM, gets an end without order. Signals that the caller has the program ignore stay ignored. At most one at a time;
	 * belongs to the main thread.
	 */
	class EndSignals
	{
	public:
		EndSignals();
		~EndSignals();
		EndSignals(const EndSignals&) = delete;
		EndSignals& operator=(const EndSignals&) = delete;

		/** @return the signal that has asked for the end; 0 = none. Thread: any. */
		static int asked();
		/** @return what such a signal makes of the program, such as "interrupted". */
		static const char* inWords(int signal);

		/** Ends the process by a signal, so that a shell stops its loops, too, and tells 128 and the signal's number. */
		[[noreturn]] static void endAs(int signal);

	private:
		std::thread watcher;
	};
} // namespace Program
