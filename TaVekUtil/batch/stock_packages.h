#pragma once

#include <string>
#include <vector>

/// Replaces `packages` by the paths of the stock archives of the host software: the files in the directory
/// "pkg" two levels above the program whose names begin with "14" or "0-" and whose extension is "dat". Never
/// raises: a failure gives one line on standard error and leaves `packages` alone.
void TaVekUtil_FindStockPackages(std::vector<std::string>& packages);

/// True for the name of a file that, lying in that directory, would be taken for a stock archive. Raises
/// Ta::Exception.
bool TaVekUtil_IsStockPackage(const std::string& name);

/// The path of the file of exactly that name in `directory`, "" when it holds none. Subdirectories are not
/// searched. Raises Ta::Exception.
std::string TaVekUtil_FindFilepath(const std::string& directory, const std::string& fileName);
