// What tests start: a program that shows what it was given, ends in a certain way, or keeps a file open.
//   process_helper words ...     writes the words after the first to standard output, one to a line
//   process_helper terminate     ends by an exception that nobody catches
//   process_helper quietly       the same, after os::silenceAbnormalEnd
//   process_helper hold FILE     says "holding" and keeps the file open for reading until standard input ends
// As "tar.exe" it writes its words to "words.txt" beside itself, makes noise on standard output and ends with
// the status that stands in "status.txt".

#include <cstdio>
#include <fstream>
#include <iostream>
#include <limits>
#include <stdexcept>
#include <string_view>

#include "platform/os/os.h"

namespace {

int actAsTar(const std::vector<std::string>& words) {
    std::string directory;
    if (os::applicationDirectory(directory)) return 99;
    os::OutputFile file;
    std::string text;
    for (std::size_t i = 1; i < words.size(); ++i) text += words[i] + '\n';
    if (file.open(directory + "/words.txt") || file.write(text.data(), text.size()) || file.commit())
        return 98;

    std::puts("noise");
    os::InputFile status;
    if (status.open(directory + "/status.txt")) return 97;
    char number[8] = {};
    std::size_t count = 0;
    return status.read(0, number, sizeof number - 1, count) ? 96 : std::atoi(number);
}

int hold(const std::string& path) {
    // The runtime's own way to open: on Windows nobody may remove the file then.
    const std::ifstream file(path, std::ios::binary);
    if (!file) return 93;
    std::cout << "holding\n" << std::flush;
    std::cin.ignore(std::numeric_limits<std::streamsize>::max());
    return 0;
}

}  // namespace

int main(int count, char** argument) {
    const std::vector<std::string> words = os::commandLine(count, argument);
    if (words.empty()) return 95;
    if (words[0].find("tar.exe") != std::string::npos) return actAsTar(words);
    if (words.size() < 2) return 94;
    if (words[1] == "words") {
        for (std::size_t i = 2; i < words.size(); ++i) std::puts(words[i].c_str());
        return 0;
    }
    if (words[1] == "hold") return words.size() == 3 ? hold(words[2]) : 92;
    if (words[1] == "quietly") os::silenceAbnormalEnd();
    throw std::runtime_error("nobody catches this");
}
