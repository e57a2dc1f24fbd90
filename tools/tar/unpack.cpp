#include "tools/tar/unpack.h"

#include "tools/tar/byte_source.h"
#include "tools/tar/failure.h"
#include "tools/tar/gzip.h"

namespace tar {

void unpack(const std::string& archive, const std::string& directory, const Extraction::Listener& listener) {
    ByteSource source(archive);
    Extraction extraction(directory, listener);
    MemberReader reader(extraction);
    try {
        if (isGzip(source)) {
            unzip(source, [&](std::span<const std::uint8_t> bytes) { reader.take(bytes); });
        } else {
            for (auto piece = source.next(); !piece.empty(); piece = source.next()) reader.take(piece);
        }
        reader.finish();
        extraction.finish();
    } catch (const Failure& failure) {
        throw Failure(archive + ": " + failure.what());
    }
}

}  // namespace tar
