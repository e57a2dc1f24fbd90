#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "TaVekUtil/edit/script_index.h"
#include "platform/archive/archive.h"
#include "platform/base/object.h"

/// The start-up script "script.xml" of an archive, which tells the sensor which files of the archive to
/// install, under which name, on which controller models. Its format is told in docs/startup-script.md.

/// The script of one archive as long as it is edited: the parsed document stays behind the member
/// "script.xml", and is serialised when somebody looks into that member or saves the archive, not after each
/// of many edits.
class StartupScript : public LiveContent {
  public:
    /// The script of the container `archive`, parsed unless an earlier edit has left it parsed. Raises
    /// Ta::Exception in the name of `operation`.
    static std::shared_ptr<StartupScript> of(zHandle archive, const char* operation);

    zHandle document() const { return document_.get(); }
    zXmlItem root() const { return zXml_Root(document()); }
    ScriptIndex& index() { return index_; }

    zStatus serialise(std::string& bytes) const override;

  private:
    explicit StartupScript(Ta::Object<void*> document);

    Ta::Object<void*> document_;
    ScriptIndex index_;
};

/// Stores the file `filePath` in the container `archive` as member `source`, and adds the script entry `name`
/// for it, restricted to `controllers` (the models in this order; none for an empty list). Earlier entries of
/// that name, in any letter case, go with the members they name.
///
/// Raises Ta::Exception, after one line on standard error; the container may then be changed in part and must
/// not be saved.
void TaVekUtil_InjectFile(const char* filePath, const char* source, const char* name,
                          const std::vector<std::string>& controllers, zHandle archive);

/// Deletes from `script` every entry named `name`, from the first `File` child of the root on and whatever
/// its element name, and from the container `archive` the members that those entries name as `source`.
/// Entries without a readable name or source (511 characters) stay. Answers success; raises Ta::Exception,
/// also when the script has no `File` at all.
zStatus TaVekUtil_DeletePreviousFiles(StartupScript& script, zHandle archive, const char* name,
                                      bool ignoreCase);

/// Removes the first `File` entry named exactly `name` from the script of the container `archive` and puts
/// its `source` into `sourceOut`, which is left alone when there is no such entry. The script member is
/// written anew in either case; the member that the entry names stays. `allocator` is not used. Raises
/// Ta::Exception.
void TaVekUtils_ScriptXmlRemoveAndGetSource(zHandle archive, const char* name, char* sourceOut,
                                            std::size_t sourceCapacity, const zAllocator* allocator);
