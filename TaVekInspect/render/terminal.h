#pragma once

#include <string>

/// How text looks: in colour on a terminal, plain everywhere else.
enum class Colour { none, bold, dim, red, green, yellow, cyan };

/// True when standard output is a terminal that shows colours and has not been asked not to (NO_COLOR).
bool outputIsTerminal();

/// `text` in `colour` when standard output is a terminal, else `text`.
std::string painted(Colour colour, const std::string& text);

/// A line on standard error that says how far a long work has come; it is there on a terminal only, and gone
/// when the object goes.
class ProgressLine {
  public:
    explicit ProgressLine(std::string subject);
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void show(std::size_t done, std::size_t count);

  private:
    std::string subject_;
    bool isShown_;
    std::size_t percent_ = 101;
};
