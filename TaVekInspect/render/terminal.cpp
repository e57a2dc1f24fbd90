#include "TaVekInspect/render/terminal.h"

#include <cstdlib>
#include <iostream>

#include "TaVekInspect/render/text.h"

namespace {

constexpr const char* clearLine = "\r\x1B[K";

const char* codeOf(Colour colour) {
    switch (colour) {
        case Colour::none:
            return "";
        case Colour::bold:
            return "\x1B[1m";
        case Colour::dim:
            return "\x1B[2m";
        case Colour::red:
            return "\x1B[31m";
        case Colour::green:
            return "\x1B[32m";
        case Colour::yellow:
            return "\x1B[33m";
        case Colour::cyan:
            return "\x1B[36m";
    }
    return "";
}

bool coloursAreUnwanted() {
    const char* wish = std::getenv("NO_COLOR");
    return wish != nullptr && *wish != '\0';
}

}  // namespace

bool outputIsTerminal() {
    static const bool isTerminal = os::isTerminal(os::Stream::output);
    return isTerminal;
}

std::string painted(Colour colour, const std::string& text, os::Stream stream) {
    if (colour == Colour::none || coloursAreUnwanted()) return text;
    if (stream == os::Stream::output ? !outputIsTerminal() : !os::isTerminal(stream)) return text;
    return codeOf(colour) + text + "\x1B[0m";
}

ProgressLine::ProgressLine(std::string subject)
    : subject_(printable(subject)), isShown_(os::isTerminal(os::Stream::error)) {}

ProgressLine::~ProgressLine() {
    if (isShown_ && percent_ <= 100) std::cerr << clearLine << std::flush;
}

void ProgressLine::show(std::size_t done, std::size_t count) {
    if (!isShown_ || count == 0) return;
    const std::size_t percent = 100 * done / count;
    if (percent == percent_) return;
    percent_ = percent;
    std::cerr << clearLine << subject_ << ": " << percent << " %" << std::flush;
}
