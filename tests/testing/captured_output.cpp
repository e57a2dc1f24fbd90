#include "tests/testing/captured_output.h"

#include <iostream>
#include <streambuf>

namespace testing {
namespace {

struct Line {
    const char* stream;
    std::string text;
    bool ended = false;
    bool flushed = false;
};

/// Cuts what one stream is given into lines, which go to a list that the streams share.
class Recorder : public std::streambuf {
  public:
    Recorder(const char* stream, std::vector<Line>& lines) : stream_(stream), lines_(lines) {}
    const std::string& raw() const { return raw_; }

  protected:
    int_type overflow(int_type character) override {
        if (!traits_type::eq_int_type(character, traits_type::eof())) {
            record(traits_type::to_char_type(character));
        }
        return traits_type::not_eof(character);
    }

    int sync() override {
        if (written_ && lines_[current_].ended) lines_[current_].flushed = true;
        return 0;
    }

  private:
    void record(char character) {
        raw_ += character;
        if (!written_ || lines_[current_].ended) {
            current_ = lines_.size();
            lines_.push_back({stream_, {}});
            written_ = true;
        }
        if (character == '\n') {
            lines_[current_].ended = true;
        } else {
            lines_[current_].text += character;
        }
    }

    const char* stream_;
    std::vector<Line>& lines_;
    std::string raw_;
    std::size_t current_ = 0;  // the stream's last line, once something was written
    bool written_ = false;
};

}  // namespace

struct CapturedOutput::State {
    std::vector<Line> lines;
    Recorder out{"out", lines};
    Recorder err{"err", lines};
    std::streambuf* const formerOut = std::cout.rdbuf(&out);
    std::streambuf* const formerErr = std::cerr.rdbuf(&err);
    // Otherwise each word on std::cerr would flush std::cout, and hide that nobody else does.
    std::ostream* const formerTie = std::cerr.tie(nullptr);
};

CapturedOutput::CapturedOutput() : state_(std::make_unique<State>()) {}

CapturedOutput::~CapturedOutput() {
    std::cout.rdbuf(state_->formerOut);
    std::cerr.rdbuf(state_->formerErr);
    std::cerr.tie(state_->formerTie);
}

std::vector<std::string> CapturedOutput::lines() const {
    std::vector<std::string> texts;
    for (const Line& line : state_->lines) {
        const char* flaw = !line.ended ? ", unfinished" : line.flushed ? "" : ", not flushed";
        texts.push_back(std::string(line.stream) + flaw + ": " + line.text);
    }
    return texts;
}

std::string CapturedOutput::out() const {
    return state_->out.raw();
}

std::string CapturedOutput::err() const {
    return state_->err.raw();
}

}  // namespace testing
