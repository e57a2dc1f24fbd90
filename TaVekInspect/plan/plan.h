#pragma once

#include <string>
#include <vector>

#include "TaVekInspect/model/finding.h"
#include "TaVekInspect/model/progress.h"

/// An add-on package that the run would load.
struct PlannedPackage {
    std::string entry;  ///< Of the configuration.
    std::string name;
    std::string beVersion;
    std::size_t fileCount = 0;  ///< For the platform of the run.
};

/// A file that the run would install.
struct PlannedFile {
    std::string package;
    std::string path;  ///< On disk.
    std::string destination;
    std::string member;  ///< "" in an installation directory.
};

/// A package that the run would remove, with the destinations of its files.
struct PlannedRemoval {
    std::string package;
    std::vector<std::string> destinations;
};

/// A package or a file that the run would pass over.
struct PlannedSkip {
    std::string subject;
    std::string reason;
};

/// What the run would do to one archive or installation directory.
struct PlannedArchive {
    enum class Outcome {
        saved,       ///< As a new archive.
        written,     ///< The manifest into the installation directory.
        unchanged,   ///< Nothing is written.
        failed,      ///< The run ends here.
        notReached,  ///< The run ends before.
    };

    std::string path;
    std::string platform;
    std::string hostVersion;
    std::vector<PlannedRemoval> removed;
    std::vector<PlannedFile> added;
    std::vector<PlannedSkip> skipped;
    std::string savedAs;  ///< Also of one that is not reached; "" when nothing would be saved.
    Outcome outcome = Outcome::failed;
    Findings findings;
};

/// What a batch run would do and meet. An error is what would end it, a warning what may surprise.
struct Plan {
    std::string configuration;  ///< As given.
    std::string platform;
    std::vector<PlannedPackage> packages;
    std::vector<PlannedArchive> archives;
    Findings findings;  ///< Those that belong to no archive.

    std::size_t countOf(Finding::Severity severity) const;
    bool succeeds() const { return countOf(Finding::Severity::error) == 0; }
};

/// Goes the road of `TaVekUtil --config CONFIGURATION --platform PLATFORM` in memory, past every failure that
/// would end it. Tar files are unpacked into a temporary directory; nothing else is written. A step of
/// `progress` is a package entry or an archive.
Plan makePlan(const std::string& configuration, const std::string& platform, const Progress& progress);
