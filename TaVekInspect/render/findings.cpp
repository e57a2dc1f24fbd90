#include "TaVekInspect/render/findings.h"

#include <iostream>

#include "TaVekInspect/render/terminal.h"
#include "TaVekInspect/render/text.h"

void printFindings(std::ostream& out, const std::string& subject, const Findings& findings) {
    const os::Stream stream = &out == &std::cerr ? os::Stream::error : os::Stream::output;
    for (const Finding& finding : findings) {
        const bool isError = finding.severity == Finding::Severity::error;
        out << printable(subject) << ": "
            << (isError ? painted(Colour::red, "error", stream) : painted(Colour::yellow, "warning", stream))
            << ": " << printable(finding.text) << '\n';
    }
}
