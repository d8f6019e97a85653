#pragma once

#include <set>
#include <string>
#include <vector>

/** What a browser would forgive and these pages must not need. */
struct CheckedPage
{
	std::vector<std::string> faults; // tags that do not match, attributes without quotes or given twice, loose '&' and '<', repeated ids
	std::set<std::string> ids;
	std::vector<std::string> links; // of href and src
};

/** Reads a page that is well-formed XML but for its doctype. */
CheckedPage checkHtml(const std::string& page);
