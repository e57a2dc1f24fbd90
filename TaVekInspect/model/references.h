#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "TaVekInspect/model/upgrade.h"

/// Who refers to what in one upgrade: script entries to members, packages to script entries. Answers in
/// constant time; the upgrade must outlive it.
class References {
  public:
    explicit References(const Upgrade& upgrade);

    /// The script entries that install the member `name`.
    const std::vector<const ScriptEntry*>& entriesOf(const std::string& name) const;

    /// The packages that record a file installed as `destination`.
    const std::vector<const RecordedPackage*>& packagesOf(const std::string& destination) const;

  private:
    std::unordered_map<std::string, std::vector<const ScriptEntry*>> entries_;       // by source
    std::unordered_map<std::string, std::vector<const RecordedPackage*>> packages_;  // by destination
};
