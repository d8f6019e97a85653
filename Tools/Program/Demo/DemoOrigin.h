#pragma once

#include "Lab/Origin.h"
#include "Lab/Script/Script.h"
#include "SharedFiles.h"

#include <string>

namespace Program
{
	/** What the examples talk to, on a free port of the loopback interface: Examples/lab/demo.lua. Runs while it lives. */
	class DemoOrigin
	{
	public:
		DemoOrigin()
			: script(origin)
		{
			script.runFile((sharedFolder("examples") / "lab/demo.lua").string());
		}

		/** @return "http://127.0.0.1:PORT". */
		std::string url() const { return origin.url(""); }

	private:
		Lab::Origin origin;
		Lab::Script script;
	};
} // namespace Program
