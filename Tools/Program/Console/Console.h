#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

/** Standard output and standard error of the command, as people at a terminal and programs at the other end read them. */
namespace Program
{
	/**
	 * Keeps closed descriptors from being taken by the next file or socket, and makes log lines fit for a terminal. Comes
	 * before anything else of the program.
	 */
	void openConsole();

	bool isTerminal(std::FILE* stream);

	/** @return a text whose control characters are spelt as \u001b; tabs and ends of lines stay. */
	std::string withoutControls(std::string_view text);
	/** The same where a stream is a terminal, which would obey them; elsewhere the text as it is. */
	std::string fitFor(std::FILE* stream, std::string_view text);

	/** Draws a line on standard error that the next one replaces. @param line  empty = takes it away. */
	void drawStatus(std::string_view line);

	/** Writes a line to standard error, in place of a status. Never throws, since nobody could be told. Thread: any. */
	void complain(std::string_view line);

	/** From here on the log leaves out lines that hold one of these texts, because they are told otherwise. */
	void leaveOutOfLog(const std::vector<std::string>& texts);

	/**
	 * Writes out what waits for standard output. A reader that has gone ends the process without a word, as it ends others.
	 * @return false, and says why, when something could not be written.
	 */
	bool finishOutput();
} // namespace Program
