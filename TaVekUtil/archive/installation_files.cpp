#include "TaVekUtil/archive/installation_files.h"

#include "platform/base/directory.h"
#include "platform/base/file.h"

namespace {

class FilesOnDisk : public InstallationFiles {
  public:
    zStatus findDirectory(const char* path) override { return zDirectory_Find(path); }
    zStatus createDirectory(const char* path) override { return zDirectory_Create(path); }
    zStatus copyFile(const char* source, const char* destination) override {
        return zFile_Copy(source, destination);
    }
    zStatus deleteFile(const char* path) override { return zFile_Delete(path); }
};

}  // namespace

InstallationFiles& InstallationFiles::onDisk() {
    static FilesOnDisk files;
    return files;
}
