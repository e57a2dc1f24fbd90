#pragma once

#include <ostream>

#include "TaVekInspect/model/upgrade.h"

/// The members of an archive, one a line: size, packed size, method, CRC-32, date, name, and who refers to
/// it.
void printList(std::ostream& out, const Upgrade& upgrade);
void writeList(std::ostream& out, const Upgrade& upgrade);
