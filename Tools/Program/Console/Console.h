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

	/** Of the terminal behind standard error; 80 and 24 when nobody knows. */
	struct TerminalSize
	{
		size_t columns;
		size_t rows;
	};
	TerminalSize terminalSize();

	/** @return what of a line fits into so many columns; what is no ASCII counts as two, as wide letters take. */
	std::string cutTo(std::string_view line, size_t columns);

	/** Draws a line on standard error that the next one replaces. @param line  empty = takes it away. */
	void drawStatus(std::string_view line);
	/** The same of several, each cut to the width of the terminal, which has to be high enough. */
	void drawStatus(const std::vector<std::string>& lines);

	/** Writes a line to standard output, in place of a status. What cannot be written is told by finishOutput. */
	void printLine(std::string_view line);

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
