#include "Run.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

int main(int argc, char** argv)
{
	HeaderTool::Options options;
	CLI::App app("Reads the reflection macros of C++ headers and writes X.generated.h and X.gen.cpp for each header X.h.");
	app.add_option("--module", options.module, "Name of the module that the headers belong to")->required();
	app.add_option("--output", options.output, "Folder for the generated files")->required();
	app.add_flag("--engine-shape", options.engineShape, "Write what the engine's own tool would, to be compiled but not linked");
	app.add_option("--reference", options.references, "Header of another module, read for its types only (repeatable)")
		->allow_extra_args(false);
	app.add_option("headers", options.headers, "Headers to read")->required();
	CLI11_PARSE(app, argc, argv);
	const HeaderTool::Diagnostics diagnostics = HeaderTool::run(options);
	for (const HeaderTool::Diagnostic& diagnostic : diagnostics)
	{
		fmt::print(stderr, "{}\n", HeaderTool::format(diagnostic));
	}
	return diagnostics.empty() ? 0 : 1;
}
