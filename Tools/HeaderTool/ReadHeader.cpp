#include "Directives.h"
#include "Parser.h"
#include "Utf8.h"

#include <algorithm>
#include <filesystem>

namespace HeaderTool
{
	namespace
	{
		std::string includeNameOf(const std::filesystem::path& path)
		{
			std::filesystem::path below = path.filename();
			std::filesystem::path name = below;
			for (std::filesystem::path folder = path.parent_path(); folder.has_filename(); folder = folder.parent_path())
			{
				if (folder.filename() == "Public")
				{
					return below.generic_string();
				}
				below = folder.filename() / below;
			}
			return name.generic_string();
		}
	} // namespace

	HeaderDef readHeader(std::string_view text, const std::string& path, bool isReference, Diagnostics& diagnostics)
	{
		const size_t before = diagnostics.size();
		HeaderDef header;
		header.path = path;
		header.fileName = std::filesystem::path(path).filename().string();
		header.includeName = includeNameOf(path);
		header.isReference = isReference;
		if (const size_t place = findNonUtf8(text); place < text.size())
		{
			const int line = 1 + static_cast<int>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(place), '\n'));
			diagnostics.push_back({path, line, "a byte on this line is no UTF-8"});
			header.startsWithPragmaOnce = true; // what was not read can lack nothing
			header.isComplete = false;
			return header;
		}
		const std::vector<Token> tokens = takeDirectives(lex(text, path, diagnostics), header, diagnostics);
		parse(tokens, header, diagnostics);
		header.isComplete = diagnostics.size() == before;
		return header;
	}
} // namespace HeaderTool
