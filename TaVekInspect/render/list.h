#pragma once

#include <ostream>

#include "TaVekInspect/model/upgrade.h"

/// The members of an archive: size, packed size, method, CRC-32, date, name, and who refers to it. As text,
/// one a line, and as a JSON document.
void printList(std::ostream& out, const Upgrade& upgrade);
void writeList(std::ostream& out, const Upgrade& upgrade);
