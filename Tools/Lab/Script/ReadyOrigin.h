#pragma once

namespace Lab
{
	class Origin;

	/**
	 * Puts every behaviour under a path of its name, with its options as the query: /drop?after=1000. Those of a second one have
	 * its name before them: /file?size=5000&rate.bytes=1000. A list of all stands at "/".
	 */
	void makeReady(Origin& origin);
} // namespace Lab
