#pragma once

#include <ostream>

#include "TaVekInspect/plan/plan.h"

/// What a run would do to each archive, and what it would meet. As text, and as a JSON document.
void printPlan(std::ostream& out, const Plan& plan);
void writePlan(std::ostream& out, const Plan& plan);
