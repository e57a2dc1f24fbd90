#pragma once

#include <string>

#include "platform/os/terminal.h"

/// How text looks: in colour on a terminal, plain everywhere else.
enum class Colour { none, bold, dim, red, green, yellow, cyan };

/// True when standard output is a terminal that obeys escape sequences.
bool outputIsTerminal();

/// `text`, which goes to `stream`, in `colour` when that is such a terminal and the user has not asked for
/// none (NO_COLOR), else `text`.
std::string painted(Colour colour, const std::string& text, os::Stream stream = os::Stream::output);

/// A line on standard error that says how far a long work has come; it is there on a terminal only, and gone
/// when the object goes.
class ProgressLine {
  public:
    explicit ProgressLine(std::string subject);
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    /// Shows how much `done` of `count` is, when that is another per cent than before.
    void show(std::size_t done, std::size_t count);

  private:
    std::string subject_;
    bool isShown_;
    std::size_t percent_ = 101;  // over 100 as long as nothing has been shown
};
