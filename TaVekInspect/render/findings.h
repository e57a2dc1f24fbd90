#pragma once

#include <ostream>
#include <string>

#include "TaVekInspect/model/finding.h"

/// One line for each finding: "SUBJECT: error: ..." or "SUBJECT: warning: ...".
void printFindings(std::ostream& out, const std::string& subject, const Findings& findings);
