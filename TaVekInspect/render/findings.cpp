#include "TaVekInspect/render/findings.h"

#include "TaVekInspect/render/terminal.h"
#include "TaVekInspect/render/text.h"

void printFindings(std::ostream& out, const std::string& subject, const Findings& findings) {
    for (const Finding& finding : findings) {
        const bool isError = finding.severity == Finding::Severity::error;
        out << printable(subject) << ": "
            << (isError ? painted(Colour::red, "error") : painted(Colour::yellow, "warning")) << ": "
            << printable(finding.text) << '\n';
    }
}
