#pragma once

#include <string>
#include <vector>

/// What the command line asked a command for.
struct Request {
    std::vector<std::string> operands;
    bool json = false;
    std::string platform = "all";  ///< plan.
    std::string html;              ///< report: the file to write.
};

/// A command: how it is called, what it says of itself, and what it does.
struct Command {
    const char* name;
    const char* operands;  ///< As the usage text shows them: "OLD NEW".
    std::size_t fewest;    ///< Operands.
    std::size_t most;
    const char* summary;
    const char* help;  ///< More of it, and the exit statuses.
    bool takesPlatform = false;
    bool takesHtml = false;
    int (*run)(const Request& request) = nullptr;  ///< Answers the exit status.
};

/// Exit statuses, which each command's help explains.
inline constexpr int exitFine = 0, exitNegative = 1, exitTrouble = 2;

inline constexpr std::size_t anyNumber = static_cast<std::size_t>(-1);

extern const Command infoCommand;
extern const Command listCommand;
extern const Command verifyCommand;
extern const Command diffCommand;
extern const Command planCommand;
extern const Command reportCommand;
