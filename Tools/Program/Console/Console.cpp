#include "Console.h"

#include "Host/Log.h"
#include "ValueTransfer.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <mutex>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace Program
{
	namespace
	{
		std::mutex errorMutex;
		size_t statusLines = 0; // guarded by errorMutex

		void writeError(const std::string& text)
		{
			std::fwrite(text.data(), 1, text.size(), stderr);
		}

		/** @return what brings the cursor to where the status begins, and takes it away. Under errorMutex. */
		std::string eraseStatus()
		{
			const size_t lines = std::exchange(statusLines, 0);
			return lines == 0 ? "" : lines == 1 ? "\r\033[K" : fmt::format("\r\033[{}A\033[J", lines - 1);
		}

		void occupyClosedDescriptors()
		{
			for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
			{
				if (fcntl(descriptor, F_GETFD) == -1)
				{
					open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY); // whoever uses it learns that it is closed
				}
			}
		}

		void writeLogLine(const char* category, ELogVerbosity::Type verbosity, const FString& line)
		{
			complain(fmt::format("{}: {}: {}", category, HostLog::VerbosityName(verbosity), Reflect::toUtf8(line)));
		}

		[[noreturn]] void endAsABrokenPipeDoes()
		{
			std::signal(SIGPIPE, SIG_DFL);
			std::raise(SIGPIPE);
			_exit(128 + SIGPIPE); // the signal is blocked
		}

		/** Streams do not keep the reason of a failure, so it is met once more. @return an errno; 0 when it is gone. */
		int reasonOfFailure()
		{
			return write(STDOUT_FILENO, "\n", 1) < 0 ? errno : 0;
		}

		bool isControl(unsigned char c)
		{
			return (c < 0x20 && c != '\n' && c != '\t') || c == 0x7f;
		}

		/** The controls of eight-bit terminals: two bytes in UTF-8. */
		bool beginsHighControl(std::string_view text)
		{
			return text.size() > 1 && text[0] == '\xc2' && static_cast<unsigned char>(text[1]) < 0xa0;
		}
	} // namespace

	void openConsole()
	{
		occupyClosedDescriptors();
		HostLog::SetSink(writeLogLine);
	}

	bool isTerminal(std::FILE* stream)
	{
		return isatty(fileno(stream));
	}

	std::string withoutControls(std::string_view text)
	{
		std::string safe;
		safe.reserve(text.size());
		for (size_t place = 0; place < text.size(); ++place)
		{
			const std::string_view rest = text.substr(place);
			if (beginsHighControl(rest))
			{
				safe += fmt::format("\\u{:04x}", static_cast<unsigned char>(rest[1]));
				++place;
			}
			else if (isControl(static_cast<unsigned char>(rest[0])) && !rest.starts_with("\r\n"))
			{
				safe += fmt::format("\\u{:04x}", static_cast<unsigned char>(rest[0]));
			}
			else
			{
				safe += rest[0];
			}
		}
		return safe;
	}

	void leaveOutOfLog(const std::vector<std::string>& texts)
	{
		HostLog::SetSink(
			[texts](const char* category, ELogVerbosity::Type verbosity, const FString& line)
			{
				const std::string logged = Reflect::toUtf8(line);
				if (std::none_of(texts.begin(), texts.end(), [&](const std::string& text) { return logged.find(text) != logged.npos; }))
				{
					writeLogLine(category, verbosity, line);
				}
			});
	}

	std::string fitFor(std::FILE* stream, std::string_view text)
	{
		return isTerminal(stream) ? withoutControls(text) : std::string(text);
	}

	void drawStatus(std::string_view line)
	{
		const std::scoped_lock lock(errorMutex);
		statusLines = line.empty() ? 0 : 1;
		writeError(fmt::format("\r{}\033[K", line));
	}

	void drawStatus(const std::vector<std::string>& lines)
	{
		const size_t room = terminalSize().columns - 1; // terminals wrap at the last column
		std::string text;
		for (const std::string& line : lines)
		{
			text += fmt::format("{}{}", text.empty() ? "" : "\n", cutTo(line, room));
		}
		const std::scoped_lock lock(errorMutex);
		writeError(eraseStatus() + text);
		statusLines = lines.size();
	}

	void printLine(std::string_view line)
	{
		const std::string fit = fitFor(stdout, line);
		const std::scoped_lock lock(errorMutex);
		if (isTerminal(stdout))
		{
			writeError(eraseStatus());
			std::fflush(stderr);
		}
		std::fwrite(fit.data(), 1, fit.size(), stdout);
		std::fputc('\n', stdout);
		std::fflush(stdout);
	}

	TerminalSize terminalSize()
	{
		winsize window{};
		ioctl(STDERR_FILENO, TIOCGWINSZ, &window);
		return {window.ws_col > 0 ? window.ws_col : size_t{80}, window.ws_row > 0 ? window.ws_row : size_t{24}};
	}

	std::string cutTo(std::string_view line, size_t columns)
	{
		size_t taken = 0;
		for (size_t place = 0; place < line.size(); ++place)
		{
			const auto byte = static_cast<unsigned char>(line[place]);
			const bool isContinued = (byte & 0xc0) == 0x80;
			taken += isContinued ? 0 : byte < 0x80 ? 1 : 2;
			if (taken > columns)
			{
				return std::string(line.substr(0, place));
			}
		}
		return std::string(line);
	}

	void complain(std::string_view line)
	{
		const std::string fit = fitFor(stderr, line);
		const std::scoped_lock lock(errorMutex);
		writeError(fmt::format("{}{}\n", eraseStatus(), fit));
	}

	bool finishOutput()
	{
		if (std::fflush(stdout) == 0 && !std::ferror(stdout))
		{
			return true;
		}
		const int reason = reasonOfFailure();
		if (reason == EPIPE)
		{
			endAsABrokenPipeDoes();
		}
		complain(fmt::format("corvane: cannot write to standard output{}", reason ? fmt::format(": {}", std::strerror(reason)) : ""));
		return false;
	}
} // namespace Program
