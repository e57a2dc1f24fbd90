#include "TaVekInspect/model/finding.h"

#include <algorithm>

std::size_t countOf(const Findings& findings, Finding::Severity severity) {
    const auto isOfIt = [severity](const Finding& finding) { return finding.severity == severity; };
    return static_cast<std::size_t>(std::count_if(findings.begin(), findings.end(), isOfIt));
}
