#include "Directives.h"
#include "Parser.h"

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
		const std::vector<Token> tokens = takeDirectives(lex(text, path, diagnostics), header, diagnostics);
		parse(tokens, header, diagnostics);
		header.isComplete = diagnostics.size() == before;
		return header;
	}
} // namespace HeaderTool
