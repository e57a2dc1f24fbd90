#pragma once

#include <memory>
#include <string>
#include <vector>

namespace testing {

/// Takes what is written to std::cout and std::cerr as long as the object lives, in the order of both.
class CapturedOutput {
  public:
    CapturedOutput();
    ~CapturedOutput();
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    /// What was written so far, line by line: "out: text" and "err: text", without the line ends. A line that
    /// was not flushed right behind its line end reads "out, not flushed: text", one that has no line end
    /// "out, unfinished: text".
    std::vector<std::string> lines() const;

    /// The raw text of one stream.
    std::string out() const;
    std::string err() const;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace testing
