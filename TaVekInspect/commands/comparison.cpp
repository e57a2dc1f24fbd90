#include "TaVekInspect/commands/comparison.h"

#include <iostream>

#include "TaVekInspect/render/findings.h"

bool Comparison::isComplete() const {
    return countOf(before.problems, Finding::Severity::error) == 0 &&
           countOf(after.problems, Finding::Severity::error) == 0;
}

int Comparison::exitStatus() const {
    if (!isComplete()) return exitTrouble;
    return difference.isEmpty() ? exitFine : exitNegative;
}

Comparison compareOperands(const Request& request) {
    Comparison comparison{readUpgrade(request.operands[0]), readUpgrade(request.operands[1]), {}};
    for (const Upgrade* upgrade : {&comparison.before, &comparison.after}) {
        if (!request.json) printFindings(std::cerr, upgrade->path, upgrade->problems);
    }
    if (comparison.before.isOpen && comparison.after.isOpen) {
        comparison.difference = compare(comparison.before, comparison.after);
    }
    return comparison;
}
