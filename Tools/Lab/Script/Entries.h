#pragma once

#include "Lab/Script/Catalogue.h"

#include <vector>

namespace Lab
{
	/** The behaviours that make an answer. */
	std::vector<CatalogueEntry> bodyEntries();
	/** Those that change what others have made. */
	std::vector<CatalogueEntry> faultEntries();
} // namespace Lab
