#pragma once

#include <string>
#include <vector>

/// Runs what the words of the command line, the program's name first, ask for. Answers the exit status.
int runCommandLine(const std::vector<std::string>& words);
