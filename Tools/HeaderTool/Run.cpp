#include "Run.h"

#include "Checks.h"
#include "Generator.h"
#include "Parser.h"

#include <fstream>

namespace HeaderTool
{
	namespace
	{
		std::optional<std::string> readFile(const std::filesystem::path& path)
		{
			std::ifstream file(path, std::ios::binary);
			if (!file || std::filesystem::is_directory(path))
			{
				return std::nullopt;
			}
			return std::string(std::istreambuf_iterator<char>(file), {});
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
					try
					{
						const std::optional<std::string> text = readFile(path);
						headers.push_back(text ? readHeader(*text, path, isReference) : throw HeaderError(1, "the file cannot be read"));
					}
					catch (const HeaderError& error)
					{
						diagnostics.push_back({path, error.line, error.what()});
					}
				}
			};
			read(options.references, true);
			read(options.headers, false);
			return headers;
		}

		void writeAll(const std::vector<HeaderDef>& headers, const Options& options, Diagnostics& diagnostics)
		{
			const Symbols symbols(headers);
			const std::string& module = options.module;
			for (const HeaderDef& header : headers)
			{
				if (!header.isReference)
				{
					const std::filesystem::path base = options.output / header.baseName();
					writeIfChanged(base.string() + ".generated.h",
						options.engineShape ? generateEngineHeader(header, module) : generateHeader(header, module), diagnostics);
					writeIfChanged(base.string() + ".gen.cpp",
						options.engineShape ? generateEngineSource(header, module) : generateSource(header, symbols, module), diagnostics);
				}
			}
		}
	} // namespace

	Diagnostics run(const Options& options)
	{
		Diagnostics diagnostics;
		const std::vector<HeaderDef> headers = readAll(options, diagnostics);
		if (diagnostics.empty()) // with a header missing, unknown names would prove nothing
		{
			diagnostics = check(headers);
		}
		if (diagnostics.empty())
		{
			writeAll(headers, options, diagnostics);
		}
		return diagnostics;
	}

	std::string format(const Diagnostic& diagnostic)
	{
		return fmt::format("{}({}): Error: {}", diagnostic.path, diagnostic.line, diagnostic.message);
	}
} // namespace HeaderTool
