// Does with containers what its words say, one after the other, for tests in which other programs look at the
// result:
//
//   load PATH            add NAME SIZE (that many bytes, all 'x')        delete NAME
//   save PATH            add-many COUNT SIZE (members "many/0" ...)      size NAME (printed)
//
// The first failure ends it: its detail goes to standard error, the exit status is 1.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/archive/archive.h"
#include "platform/base/failure.h"
#include "platform/os/os.h"

namespace {

class Carrier {
  public:
    explicit Carrier(std::vector<std::string> words) : words_(std::move(words)) {
        check(zArchive_Construct(&archive_, nullptr));
    }
    ~Carrier() { static_cast<void>(zObject_Destroy(archive_)); }
    Carrier(const Carrier&) = delete;
    Carrier& operator=(const Carrier&) = delete;

    void run() {
        while (next_ < words_.size()) step(word());
    }

  private:
    void step(const std::string& operation) {
        if (operation == "load") return check(zArchive_Load(archive_, word().c_str()));
        if (operation == "save") return check(zArchive_Save(archive_, word().c_str()));
        if (operation == "delete") return check(zArchive_DeleteFile(archive_, word().c_str()));
        if (operation == "size") return printSize(word());
        if (operation == "add") {
            const std::string name = word();
            return add(name, number());
        }
        if (operation == "add-many") {
            const std::size_t count = number();
            const std::size_t size = number();
            for (std::size_t i = 0; i < count; ++i) add("many/" + std::to_string(i), size);
            return;
        }
        fail("no such operation: " + operation);
    }

    void add(const std::string& name, std::size_t size) {
        const std::string content(size, 'x');
        check(zArchive_AddData(archive_, content.data(), content.size(), name.c_str(), 0));
    }
    void printSize(const std::string& name) {
        std::int64_t index = 0;
        check(zArchive_Find(archive_, name.c_str(), &index));
        std::printf("%llu\n", static_cast<unsigned long long>(zArchive_FileSize(archive_, index)));
    }

    std::string word() {
        if (next_ == words_.size()) fail("a word is missing");
        return words_[next_++];
    }
    std::size_t number() { return std::strtoull(word().c_str(), nullptr, 10); }
    static void check(zStatus status) {
        if (status != zStatus_Success) fail(std::string(failure::detailOf(status)));
    }
    [[noreturn]] static void fail(const std::string& why) {
        std::fprintf(stderr, "%s\n", why.c_str());
        std::exit(1);
    }

    std::vector<std::string> words_;
    std::size_t next_ = 1;
    zHandle archive_ = nullptr;
};

}  // namespace

int main(int count, char** words) {
    Carrier(os::commandLine(count, words)).run();
}
