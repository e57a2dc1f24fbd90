#include "tools/tar/command_line.h"

#include "tools/tar/failure.h"

namespace tar {

const char* const usage =
    "Usage: tar [--force-local] [-C DIRECTORY] -x [-v] -f ARCHIVE\n"
    "Unpacks tar archives, plain or compressed with gzip.\n"
    "\n"
    "  -x              unpack\n"
    "  -f ARCHIVE      the archive\n"
    "  -C DIRECTORY    the existing directory to unpack into, instead of the working directory\n"
    "  -v              print the name of each member\n"
    "  --force-local   a name with a colon is that of a file here, which it always is\n"
    "  --help          print this text\n"
    "\n"
    "Letters can be joined: -xvf ARCHIVE. The exit status is 0, or 2 when something went wrong.\n";

namespace {

/// Goes through the words, letter by letter where they are joined.
class Reader {
  public:
    explicit Reader(std::span<const std::string> words) : words_(words) {}

    Request read() {
        while (next_ < words_.size()) readWord(words_[next_++]);
        if (request_.help) return request_;
        if (!unpacks_) throw Failure("nothing to do without -x (--help tells more)");
        if (request_.archive.empty()) throw Failure("-f with an archive is missing (--help tells more)");
        return request_;
    }

  private:
    void readWord(const std::string& word) {
        if (word == "--help") {
            request_.help = true;
        } else if (word.starts_with('-') && word.size() > 1 && word[1] != '-') {
            readLetters(word);
        } else if (word != "--force-local") {
            throw Failure("cannot make sense of \"" + word + "\" (--help tells more)");
        }
    }

    void readLetters(const std::string& word) {
        for (std::size_t i = 1; i < word.size(); ++i) {
            switch (word[i]) {
                case 'x':
                    unpacks_ = true;
                    break;
                case 'v':
                    request_.verbose = true;
                    break;
                case 'f':
                    request_.archive = valueOf(word, i);
                    return;
                case 'C':
                    request_.directory = valueOf(word, i);
                    return;
                default:
                    throw Failure("no option -" + word.substr(i, 1) + " (--help tells more)");
            }
        }
    }

    /// The value of the option at `place`: the rest of its word, else the next one.
    std::string valueOf(const std::string& word, std::size_t place) {
        if (place + 1 < word.size()) return word.substr(place + 1);
        if (next_ == words_.size()) throw Failure("a value is missing behind " + word);
        return words_[next_++];
    }

    std::span<const std::string> words_;
    std::size_t next_ = 0;
    bool unpacks_ = false;
    Request request_;
};

}  // namespace

Request readCommandLine(std::span<const std::string> words) {
    return Reader(words).read();
}

}  // namespace tar
