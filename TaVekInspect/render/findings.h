#pragma once

#include <ostream>
#include <string>

#include "TaVekInspect/model/finding.h"

/// One line for each finding: "SUBJECT: error: ..." or "SUBJECT: warning: ...". `out` is std::cout or
/// std::cerr.
void printFindings(std::ostream& out, const std::string& subject, const Findings& findings);
