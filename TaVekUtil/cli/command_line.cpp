#include "TaVekUtil/cli/command_line.h"

#include <iostream>

#include "TaVekUtil/batch/run.h"
#include "TaVekUtil/cli/extract_manifest.h"
#include "TaVekUtil/cli/inject_library.h"

namespace {

/// A text buffer that a flag fills.
struct Target {
    char* buffer = nullptr;
    std::size_t capacity = 0;
};

/// The one that the flag `word` fills; null for any other word.
Target targetOf(const std::string& word, Flags& flags) {
    if (word == "--archive") return {flags.archive.data(), flags.archive.capacity()};
    if (word == "--file") return {flags.file.data(), flags.file.capacity()};
    if (word == "--config") return {flags.config.data(), flags.config.capacity()};
    if (word == "--platform") return {flags.platform.data(), flags.platform.capacity()};
    if (word == "--manifest") return {flags.manifest.data(), flags.manifest.capacity()};
    return {};
}

bool isDashed(const std::string& word) {
    return word.starts_with('-');
}

bool isPlatform(const char* key) {
    for (const char* known : {"all", "ombix", "linux_arm7", "linux_arm64", "win"}) {
        if (zStrEquals(key, known)) return true;
    }
    return false;
}

Mode refuse(const char* mistake) {
    std::cerr << "ERROR: " << mistake << std::endl << std::endl;
    printUsage();
    return Mode::none;
}

Mode chooseBatch(Flags& flags) {
    if (flags.platform.empty()) {
        static_cast<void>(zStrCopy(flags.platform.data(), flags.platform.capacity(), "all"));
    }
    if (isPlatform(flags.platform.c_str())) return Mode::batch;
    // The key is "ombix"; this message has always spelled it otherwise.
    return refuse("Platform must be specified ['linux_arm7', 'linux_arm64', 'Ombix', 'win', 'all'].");
}

}  // namespace

void printUsage() {
    std::cout
        << "Usage: \n"
           "       TaVekUtil.exe --file <libFilePath> --archive <archiveFilePath>\n"
           "       TaVekUtil.exe --manifest <outManifestFileName> --archive <archiveFilePath>\n"
           "       TaVekUtil.exe --config <configFileName> [--platform <platform>]\n"
           "           <configFileName> - Should be in same directory as application i.e sample_config.xml\n"
           "           <platform> - Platform to build for. Options are ['linux_arm7', 'linux_arm64', 'win', "
           "'all']. Default is 'all'.\n"
           "\n"
           "If archive and file are explicitly specified, archive will be overwritten\n"
        << std::flush;
}

Scan scanFlags(const std::vector<std::string>& words, Flags& flags) {
    std::size_t i = 1;
    while (i < words.size()) {
        const std::string& word = words[i];
        if (word == "-h" || word == "--help") return Scan::help;
        // Asked of every word with a dash, also of one that is no flag of ours.
        if (isDashed(word) && (i + 1 == words.size() || isDashed(words[i + 1]))) {
            std::cerr << "ERROR: No arguments specified with flag '" << word << "'" << std::endl;
            return Scan::failed;
        }
        const Target target = targetOf(word, flags);
        if (target.buffer == nullptr) {
            i += 1;
            continue;
        }
        static_cast<void>(zStrCopy(target.buffer, target.capacity, words[i + 1].c_str()));
        i += 2;
    }
    return Scan::complete;
}

Mode chooseMode(Flags& flags) {
    if (!flags.config.empty()) return chooseBatch(flags);
    if (!flags.archive.empty() && !flags.manifest.empty()) return Mode::extraction;
    if (!flags.archive.empty() && !flags.file.empty()) return Mode::injection;
    return refuse("No flags specified.");
}

int runMode(Mode mode, const Flags& flags) {
    if (mode == Mode::batch) return TaVekUtil_Run(flags.platform.c_str(), flags.config.c_str());
    if (mode == Mode::extraction) return extractManifest(flags.archive.c_str(), flags.manifest.c_str());
    return injectLibToArchiveFile(flags.file.c_str(), flags.archive.c_str());
}
