#pragma once

#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "TaVekInspect/model/upgrade.h"
#include "TaVekInspect/plan/plan.h"

/// Where the files of one archive are installed, before the run and by the run; names what a file that is
/// added takes away from others.
class Destinations {
  public:
    /// `removed` names the packages whose files are gone before any is added. `before` must outlive it.
    Destinations(const Upgrade& before, const std::vector<std::string>& removed);

    /// Notes `file`, which the run installs, over a file on disk when `replacesFile`, and adds to `findings`
    /// what may surprise about its destination and its member.
    void note(const PlannedFile& file, bool replacesFile, Findings& findings);

    /// Adds to `findings` each member that a noted file shares with an entry of `after`, the archive as it
    /// would be saved, that was there before the run.
    void checkSharing(const Upgrade& after, Findings& findings) const;

  private:
    std::string keyOf(const std::string& destination) const;
    void checkOwner(const PlannedFile& file, bool replacesFile, Findings& findings) const;
    void checkMember(const PlannedFile& file, Findings& findings);

    const Upgrade& before_;
    // Both by what two spellings of one destination have in common.
    std::unordered_multimap<std::string, const ScriptEntry*> hostEntries_;
    std::multimap<std::string, std::string> owners_;  // packages of before that record it
    std::map<std::string, std::string> noted_;        // the package of the run that took it first
    std::map<std::string, std::string> members_;      // the path of the file that took it first
    std::vector<PlannedFile> files_;
};

/// True when `path`, taken below a directory, may lead out of it: when it goes up. One that begins at a root
/// stays below, as joining takes the root off.
bool leavesDirectory(const std::string& path);
