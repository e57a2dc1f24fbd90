#pragma once

#include <string>
#include <vector>

/// Something that is wrong, or may surprise.
struct Finding {
    enum class Severity { error, warning };

    Severity severity;
    std::string text;
};

using Findings = std::vector<Finding>;

inline void addError(Findings& findings, std::string text) {
    findings.push_back({Finding::Severity::error, std::move(text)});
}

inline void addWarning(Findings& findings, std::string text) {
    findings.push_back({Finding::Severity::warning, std::move(text)});
}

/// How many of `findings` are of `severity`.
std::size_t countOf(const Findings& findings, Finding::Severity severity);
