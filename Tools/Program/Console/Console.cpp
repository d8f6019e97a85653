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
#include <unistd.h>
#include <utility>

namespace Program
{
	namespace
	{
		std::mutex errorMutex;
		bool hasStatus = false; // guarded by errorMutex

		void writeError(const std::string& text)
		{
			std::fwrite(text.data(), 1, text.size(), stderr);
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
		hasStatus = !line.empty();
		writeError(fmt::format("\r{}\033[K", line));
	}

	void complain(std::string_view line)
	{
		const std::string fit = fitFor(stderr, line);
		const std::scoped_lock lock(errorMutex);
		writeError(fmt::format("{}{}\n", std::exchange(hasStatus, false) ? "\r\033[K" : "", fit));
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
