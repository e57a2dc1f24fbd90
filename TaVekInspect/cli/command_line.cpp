#include "TaVekInspect/cli/command_line.h"

#include <algorithm>
#include <iostream>
#include <new>

#include "TaVekInspect/commands/command.h"

namespace {

const Command* const commands[] = {&infoCommand, &listCommand, &verifyCommand,
                                   &diffCommand, &planCommand, &reportCommand};

const Command* findCommand(const std::string& name) {
    for (const Command* command : commands) {
        if (name == command->name) return command;
    }
    return nullptr;
}

// ---- What the program says of itself -------------------------------------------------------------------

std::string usageOf(const Command& command) {
    std::string usage = std::string("TaVekInspect ") + command.name + ' ' + command.operands;
    if (command.takesPlatform) usage += " [--platform KEY]";
    if (command.takesHtml) usage += " --html FILE";
    return usage + " [--json]";
}

void printHelp() {
    std::cout
        << "Looks into upgrade archives and host installation directories; changes nothing.\n\nUsage:\n";
    for (const Command* command : commands) {
        std::cout << "  " << usageOf(*command) << "\n      " << command->summary << '\n';
    }
    std::cout << "  TaVekInspect [COMMAND] --help\n  TaVekInspect --version\n\n"
                 "With --json a command prints one JSON document instead of text.\n"
                 "Exit status 2 is a mistake on the command line; the others are each command's own.\n";
}

void printHelp(const Command& command) {
    std::cout << "Usage: " << usageOf(command) << "\n\n"
              << command.help << "A mistake on the command line ends with 2.\n";
}

int printVersion() {
    std::cout << "TaVekInspect " TAVEK_VERSION "\n";
    return exitFine;
}

int refuse(const std::string& mistake, const Command* command = nullptr) {
    const std::string name = command == nullptr ? "" : std::string(command->name) + ' ';
    std::cerr << "TaVekInspect: " << mistake << "\nTry \"TaVekInspect " << name << "--help\".\n";
    return exitTrouble;
}

// ---- Scanning ------------------------------------------------------------------------------------------

/// The words behind a command's name, taken apart.
class Scan {
  public:
    Scan(const Command& command, std::vector<std::string> words)
        : command_(command), words_(std::move(words)) {}

    /// False with a mistake, which mistake() names.
    bool run() {
        for (at_ = 0; at_ < words_.size() && mistake_.empty(); ++at_) takeWord(words_[at_]);
        if (!mistake_.empty() || asksHelp || asksVersion) return mistake_.empty();
        const std::size_t count = request.operands.size();
        if (count < command_.fewest) mistake_ = std::string("missing operand: ") + command_.operands;
        if (count > command_.most) mistake_ = "unexpected operand: " + request.operands[command_.most];
        if (command_.takesHtml && request.html.empty()) mistake_ = "--html FILE is required";
        return mistake_.empty();
    }

    const std::string& mistake() const { return mistake_; }

    Request request;
    bool asksHelp = false;
    bool asksVersion = false;

  private:
    void takeWord(const std::string& word) {
        if (onlyOperands_ || word.size() < 2 || word[0] != '-') {
            request.operands.push_back(word);
        } else if (word == "--") {
            onlyOperands_ = true;
        } else if (word == "--json") {
            request.json = true;
        } else if (word == "--help" || word == "-h") {
            asksHelp = true;
        } else if (word == "--version") {
            asksVersion = true;
        } else if (word == "--platform" && command_.takesPlatform) {
            takeValue(word, request.platform);
            checkPlatform();
        } else if (word == "--html" && command_.takesHtml) {
            takeValue(word, request.html);
        } else {
            mistake_ = "unknown option: " + word;
        }
    }

    void takeValue(const std::string& option, std::string& value) {
        if (at_ + 1 == words_.size() || words_[at_ + 1].empty()) {
            mistake_ = "option without a value: " + option;
        } else {
            value = words_[++at_];
        }
    }

    void checkPlatform() {
        constexpr const char* keys[] = {"linux_arm7", "linux_arm64", "ombix", "win", "all"};
        if (!mistake_.empty() ||
            std::find(std::begin(keys), std::end(keys), request.platform) != std::end(keys))
            return;
        mistake_ = "no platform: " + request.platform + " (linux_arm7, linux_arm64, ombix, win or all)";
    }

    const Command& command_;
    std::vector<std::string> words_;
    std::size_t at_ = 0;
    bool onlyOperands_ = false;
    std::string mistake_;
};

int runCommand(const Command& command, std::vector<std::string> words) {
    Scan scan(command, std::move(words));
    if (!scan.run()) return refuse(scan.mistake(), &command);
    if (scan.asksVersion) return printVersion();
    if (!scan.asksHelp) return command.run(scan.request);
    printHelp(command);
    return exitFine;
}

}  // namespace

int runCommandLine(const std::vector<std::string>& words) {
    if (words.size() < 2) return refuse("no command given");
    if (words[1] == "--version") return printVersion();
    if (words[1] == "--help" || words[1] == "-h" || words[1] == "help") {
        printHelp();
        return exitFine;
    }
    const Command* command = findCommand(words[1]);
    if (command == nullptr) return refuse("unknown command: " + words[1]);
    try {
        return runCommand(*command, {words.begin() + 2, words.end()});
    } catch (const std::bad_alloc&) {
        std::cerr << "TaVekInspect: out of memory\n";
        return exitTrouble;
    }
}
