#include "Run.h"

#include "Checks.h"
#include "Generator.h"
#include "Parser.h"

#include <algorithm>
#include <fmt/format.h>
#include <fstream>
#include <sstream>
#include <tuple>

namespace HeaderTool
{
	namespace
	{
		std::optional<std::string> readFile(const std::filesystem::path& path)
		{
			std::ifstream file(path, std::ios::binary);
			std::stringstream text;
			// An empty file would put the string stream into its error state, so it is told apart first.
			if (file && file.peek() != std::ifstream::traits_type::eof())
			{
				text << file.rdbuf();
			}
			return file.is_open() && !file.bad() && !std::filesystem::is_directory(path) ? std::optional(text.str()) : std::nullopt;
		}

		/** Leaves a file alone that holds the text already: its time decides what is compiled again. */
		void writeIfChanged(const std::filesystem::path& path, const std::string& text, Diagnostics& diagnostics)
		{
			if (readFile(path) == text)
			{
				return;
			}
			std::error_code ignored; // the attempt to write tells
			std::filesystem::create_directories(path.parent_path(), ignored);
			std::ofstream file(path, std::ios::binary | std::ios::trunc);
			file << text;
			file.close();
			if (!file)
			{
				diagnostics.push_back({path.string(), 1, "the file cannot be written"});
			}
		}

		std::vector<HeaderDef> readAll(const Options& options, Diagnostics& diagnostics)
		{
			std::vector<HeaderDef> headers;
			const auto read = [&](const std::vector<std::string>& paths, bool isReference)
			{
				for (const std::string& path : paths)
				{
					if (const std::optional<std::string> text = readFile(path))
					{
						headers.push_back(readHeader(*text, path, isReference, diagnostics));
					}
					else
					{
						diagnostics.push_back({path, 1, "the file cannot be read"});
					}
				}
			};
			read(options.references, true);
			read(options.headers, false);
			return headers;
		}

		/** By header as given, then by line; what was found first on a line stays first. */
		void sort(Diagnostics& diagnostics, const Options& options)
		{
			const auto orderOf = [&](const Diagnostic& diagnostic)
			{
				const auto place = std::find(options.headers.begin(), options.headers.end(), diagnostic.path);
				return std::tuple(place - options.headers.begin(), diagnostic.path, diagnostic.line);
			};
			std::stable_sort(
				diagnostics.begin(), diagnostics.end(), [&](const Diagnostic& a, const Diagnostic& b) { return orderOf(a) < orderOf(b); });
		}

		void writeAll(const std::vector<HeaderDef>& headers, const Options& options, Diagnostics& diagnostics)
		{
			const Symbols symbols(headers);
			for (const HeaderDef& header : headers)
			{
				if (!header.isReference)
				{
					const std::filesystem::path base = options.output / header.baseName();
					const std::string& module = options.module;
					writeIfChanged(base.string() + ".generated.h",
						options.engineShape ? generateEngineHeader(header, module) : generateHeader(header, module), diagnostics);
					writeIfChanged(base.string() + ".gen.cpp",
						options.engineShape ? generateEngineSource(header, module) : generateSource(header, symbols, module), diagnostics);
				}
			}
			if (options.json)
			{
				writeIfChanged(*options.json, dumpJson(headers, options.module), diagnostics);
			}
		}
	} // namespace

	Diagnostics run(const Options& options)
	{
		Diagnostics diagnostics;
		const std::vector<HeaderDef> headers = readAll(options, diagnostics);
		check(headers, diagnostics);
		if (diagnostics.empty())
		{
			writeAll(headers, options, diagnostics);
		}
		sort(diagnostics, options);
		return diagnostics;
	}

	std::string format(const Diagnostic& diagnostic)
	{
		return fmt::format("{}({}): Error: {}", diagnostic.path, diagnostic.line, diagnostic.message);
	}
} // namespace HeaderTool
