#pragma once

#include <string>

/// One spelling for all the paths of one file or directory, also of one that is yet to be made.
std::string spellingOf(std::string path);
