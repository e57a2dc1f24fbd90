#include "platform/archive/codec.h"
#include "platform/archive/zip_directory.h"
#include "platform/archive/zip_inspector.h"
#include "platform/archive/zip_writer.h"
#include "platform/base/failure.h"

namespace zip {
namespace {

class ZipCodec : public Codec {
  public:
    zStatus load(const std::string& path, MemberTable& members) override {
        zStatus status = file_.open(path);
        if (status == zStatus_Success) status = readEnding(file_, ending_);
        if (status == zStatus_Success) status = readDirectory(file_, ending_, members);
        return status;
    }

    zStatus read(std::string_view name, std::uint64_t origin, const zAllocator* allocator,
                 Block& bytes) override {
        EntryReader reader(file_, ending_.directory);
        Entry entry;
        if (const zStatus status = reader.read(origin, entry); status != zStatus_Success) return status;
        if (entry.name != name) {
            return failure::record(zStatus_IoError,
                                   file_.path() + ": the file was changed while it was read");
        }
        return MemberData(file_, reader.members()).decode(entry, allocator, bytes);
    }

    zStatus save(const std::string& path, MemberTable& members) override {
        OutputStream output;
        if (const zStatus status = output.open(path); status != zStatus_Success) return status;
        Writer writer(file_, ending_.directory, output);
        if (const zStatus status = writer.write(members, ending_.comment); status != zStatus_Success)
            return status;
        return file_.isSameFileAs(path) ? replaceLoaded(path, members, writer, output) : output.commit();
    }

    zStatus describe(std::string_view name, std::uint64_t origin, zMemberInfo& info) override {
        return inspector().describe(name, origin, info);
    }

    zStatus verify(std::string_view name, std::uint64_t origin) override {
        return inspector().verify(name, origin);
    }

    zStatus trySave(MemberTable& members) override {
        OutputStream nowhere;
        return Writer(file_, ending_.directory, nowhere).write(members, ending_.comment);
    }

    std::size_t longestName() const override { return longestText; }

  private:
    Inspector& inspector() {
        if (!inspector_) inspector_ = std::make_unique<Inspector>(file_, ending_.directory);
        return *inspector_;
    }
    zStatus replaceLoaded(const std::string& path, MemberTable& members, const Writer& writer,
                          OutputStream& output);

    SourceFile file_;
    Ending ending_;
    std::unique_ptr<Inspector> inspector_;  // made when somebody looks
};

/// Puts the output in the place of the loaded file, and goes on with it. Windows replaces no file that
/// somebody holds open, so it is closed for that moment; where replacing fails, the old one is opened again.
zStatus ZipCodec::replaceLoaded(const std::string& path, MemberTable& members, const Writer& writer,
                                OutputStream& output) {
    const std::string loadedPath = file_.path();
    const std::uint64_t loadedSize = file_.size();
    inspector_.reset();  // it has seen the old file
    file_.close();
    const zStatus status = output.commit();
    if (status != zStatus_Success) {
        // What is to be told is why saving failed, whatever happens here.
        const std::string detail(failure::detailOf(status));
        static_cast<void>(file_.reopen(loadedPath, loadedSize));
        return failure::record(status, detail);
    }
    ending_.directory = writer.directory();
    auto offset = writer.centralOffsets().begin();
    for (std::size_t i = 0; i < members.places(); ++i) {
        Member* member = members.at(i);
        if (member == nullptr) continue;
        if (!member->isAdded()) member->origin = *offset;
        ++offset;
    }
    // The archive is saved. When it cannot be opened again, whoever wants to read from it is told.
    static_cast<void>(file_.reopen(path, output.position()));
    return zStatus_Success;
}

}  // namespace
}  // namespace zip

std::unique_ptr<Codec> makeZipCodec() {
    return std::make_unique<zip::ZipCodec>();
}
